#include <cstdio>
#include <memory>

#include <QBuffer>
#include <QFileInfo>
#include <QJsonObject>

#include "apps/krmodel/BatchCommandLine.h"
#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Failure.h"
#include "apps/krmodel/InputFile.h"
#include "apps/krmodel/Picture.h"
#include "apps/krmodel/PngFile.h"
#include "apps/krmodel/TextTable.h"
#include "apps/krmodel/TextureMake.h"
#include "apps/krmodel/TextureTexts.h"
#include "core/mesh/MeshTextureInfo.h"
#include "core/utility/Utility.h"
#include "fileformat/texture/TextureFile.h"

namespace krmodel {

namespace {

/// Why a file gave no picture: it is no texture file, it has none, or it is one that cannot be read.
[[noreturn]] void FailToLoad(const QString& fileName)
{
    QJsonObject object;
    int error = Utility::JsonNoError;
    const bool isObject = Utility::LoadJsonFile(object, fileName, error);
    const QJsonValue picture = object[QLatin1String(kImageDataKey)];
    if (!isObject || !picture.isString())
        throw Failure(ExitCode::NotReadable,
                      fileName + QStringLiteral(": not readable as a texture file, it is damaged, cut short "
                                                "or of another format"));
    if (picture.toString().isEmpty())
        throw Failure(ExitCode::Empty, fileName + QStringLiteral(": holds no picture"));
    QByteArray bytes = QByteArray::fromBase64(picture.toString().toLatin1());
    QBuffer file(&bytes);
    RequireRoomForPixels(file, MeshTextureInfo::IsLoadableSize);
    throw Failure(ExitCode::NotReadable,
                  fileName + QStringLiteral(": its picture is damaged, too large or of a format that is not "
                                            "known"));
}

TextureFile LoadTexture(const QString& fileName)
{
    RequireReadable(fileName);
    TextureFile texture;
    if (!texture.LoadFile(fileName))
        FailToLoad(fileName);
    return texture;
}

void AddMatrix(TextTable& table, const Matrix4<double>& matrix)
{
    for (int row = 0; row < 4; ++row) {
        QStringList cells = {row == 0 ? QStringLiteral("matrix") : QString()};
        for (int column = 0; column < 4; ++column)
            cells << NumberText(matrix.get(row, column));
        table.AddRow(cells);
    }
}

struct ShowOptions {
    QString input;
    BatchOptions batch;
};

ExitCode Show(const QString& input)
{
    const TextureFile texture = LoadTexture(input);
    const MeshMaterialParameters& parameters = texture.GetParameters();
    const QSize pixels = texture.GetImage().size();
    TextTable table;
    table.AddRow({QStringLiteral("name"), NameText(texture.getTextureName())});
    table.AddRow({QStringLiteral("identifier"), TextOrDash(NameText(texture.GetPatternID()))});
    table.AddRow(
        {QStringLiteral("file size"), CountText(QFileInfo(input).size()) + QStringLiteral(" bytes")});
    table.AddRow(
        {QStringLiteral("picture"), QStringLiteral("%1 x %2").arg(pixels.width()).arg(pixels.height())});
    table.AddRow({QStringLiteral("wrap"), QLatin1String(kWraps[parameters.wrapS].name)});
    table.AddRow({QStringLiteral("border"), ColourText(parameters.borderColor)});
    table.AddRow({QStringLiteral("offset"), PairText(parameters.matrix.translation)});
    table.AddRow({QStringLiteral("repeat"), PairText(parameters.matrix.repeat)});
    table.AddRow({QStringLiteral("rotation"), NumberText(parameters.matrix.rotation.z) + QChar(0xB0)});
    AddMatrix(table, parameters.matrix.matrix);
    std::fputs((input + QLatin1Char('\n') + table.ToString()).toUtf8().constData(), stdout);
    return ExitCode::Done;
}

ExitCode RunShow(const ShowOptions& options)
{
    return RunTasks({{options.input, [&] { return Show(options.input); }, {}}}, options.batch);
}

struct ExtractOptions {
    QString input;
    QString output;
    BatchOptions batch;
};

ExitCode Extract(const QString& input, const PendingFile& output)
{
    WritePng(output, EncodePng(LoadTexture(input).GetImage()));
    return ExitCode::Done;
}

ExitCode RunExtract(const ExtractOptions& options)
{
    RequirePngName(options.output);
    const PendingFile output(options.output);
    return RunTasks({{options.input, [&] { return Extract(options.input, output); }, {output}}},
                    options.batch);
}

void AddShow(CLI::App& texture, Command& command)
{
    const auto options = std::make_shared<ShowOptions>();
    CLI::App& verb =
        AddVerb(texture, "show", "Print what a texture file holds: name, picture, how it is laid", command,
                [options] { return RunShow(*options); });
    AddText(verb, "FILE", options->input, "texture file to read").Required();
    AddQuiet(verb, options->batch);
    AddLimits(verb, options->batch);
}

void AddExtract(CLI::App& texture, Command& command)
{
    const auto options = std::make_shared<ExtractOptions>();
    CLI::App& verb = AddVerb(texture, "extract", "Write the picture that a texture file holds", command,
                             [options] { return RunExtract(*options); });
    AddText(verb, "FILE", options->input, "texture file to read").Required();
    AddText(verb, "OUT.png", options->output, "picture to write, PNG").Required();
    AddQuiet(verb, options->batch);
    AddLimits(verb, options->batch);
}

} // namespace

void AddTexture(CLI::App& app, Command& command)
{
    CLI::App& texture = AddGroup(app, "texture", "Make, show and take apart texture files",
                                 "Each explains itself: krmodel texture make --help");
    AddTextureMake(texture, command);
    AddShow(texture, command);
    AddExtract(texture, command);
}

} // namespace krmodel
