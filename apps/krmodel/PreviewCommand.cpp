#include <QFile>
#include <QImage>

#include "apps/krmodel/Batch.h"
#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Failure.h"
#include "apps/krmodel/ModelFile.h"
#include "apps/krmodel/Picture.h"
#include "apps/krmodel/Placement.h"
#include "apps/krmodel/Renderer.h"

namespace krmodel {

namespace {

void RequirePngName(const QString& fileName)
{
    if (!fileName.endsWith(QStringLiteral(".png"), Qt::CaseInsensitive))
        throw Failure(ExitCode::Usage, fileName + QStringLiteral(": the picture's name must end in .png"));
}

void WritePng(const PendingFile& output, const QByteArray& png)
{
    QFile file(output.GetName());
    // Unbuffered, so that a full disk shows in the result of the write.
    const bool isWritten = !png.isEmpty() && file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
                           file.write(png) == png.size();
    if (!isWritten)
        throw Failure(ExitCode::WriteFailed,
                      output.GetTarget() + QStringLiteral(": cannot write: ") + file.errorString());
    file.close();
    output.Commit();
}

/// Made smaller, in its proportions, until it fits.
QImage Shrunk(const QImage& picture, QSize most)
{
    // A long strip keeps a pixel of its short side.
    const QSize size = picture.size().scaled(most, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    return picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

/// The picture that the file keeps; made smaller if it does not fit into the size asked for, as it is if it
/// is a PNG that does.
QByteArray StoredPicture(const QString& fileName, const Thumbnail& thumbnail, std::optional<QSize> most)
{
    if (thumbnail.bytes.isEmpty())
        throw Failure(ExitCode::Empty, fileName + QStringLiteral(": keeps no thumbnail"));
    const QImage picture = DecodePicture(thumbnail.bytes);
    if (picture.isNull())
        throw Failure(ExitCode::NotReadable,
                      fileName + QStringLiteral(": its thumbnail is no PNG or JPEG, damaged or too large"));
    if (most && picture.size().boundedTo(*most) != picture.size())
        return EncodePng(Shrunk(picture, *most));
    return IsPng(thumbnail.bytes) ? thumbnail.bytes : EncodePng(picture);
}

QByteArray Drawing(Model& model, const Arguments& arguments)
{
    constexpr QSize kUsualSize(800, 600);
    PlaceInMillimetres(model);
    return EncodePng(RenderModel(model, *arguments.view, arguments.size.value_or(kUsualSize)));
}

ExitCode Preview(const Arguments& arguments, const PendingFile& output)
{
    const QString& input = arguments.inputs.first();
    LoadedModel loaded = LoadModel(input);
    WritePng(output, arguments.wantsThumbnail ? StoredPicture(input, loaded.model.thumbnail, arguments.size)
                                              : Drawing(loaded.model, arguments));
    return ExitCode::Done;
}

} // namespace

ExitCode RunPreview(const Arguments& arguments)
{
    RequirePngName(arguments.output);
    const PendingFile output(arguments.output);
    return RunTasks({{arguments.inputs.first(), [&] { return Preview(arguments, output); }, {output}}},
                    arguments);
}

} // namespace krmodel
