#include <QBuffer>
#include <QFile>
#include <QImage>

#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Failure.h"
#include "apps/krmodel/ModelFile.h"
#include "apps/krmodel/Placement.h"
#include "apps/krmodel/Renderer.h"

namespace krmodel {

namespace {

void RequirePngName(const QString& fileName)
{
    if (!fileName.endsWith(QStringLiteral(".png"), Qt::CaseInsensitive))
        throw Failure(ExitCode::Usage, fileName + QStringLiteral(": the picture's name must end in .png"));
}

void WritePng(const QString& fileName, const QImage& image)
{
    QBuffer png;
    png.open(QIODevice::WriteOnly);
    QFile file(fileName);
    // Unbuffered, so that a full disk shows in the result of the write.
    const bool isWritten = image.save(&png, "PNG") &&
                           file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
                           file.write(png.data()) == png.data().size();
    if (!isWritten)
        throw Failure(ExitCode::WriteFailed,
                      fileName + QStringLiteral(": cannot write: ") + file.errorString());
}

} // namespace

ExitCode RunPreview(const Arguments& arguments)
{
    RequirePngName(arguments.output);
    LoadedModel loaded = LoadModel(arguments.inputs.first());
    PlaceInMillimetres(loaded.model);
    WritePng(arguments.output, RenderModel(loaded.model, *arguments.view, arguments.size));
    return ExitCode::Done;
}

} // namespace krmodel
