#include "apps/krmodel/TextureMake.h"

#include <algorithm>
#include <memory>

#include <QColor>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QJsonObject>
#include <QUuid>

#include "apps/krmodel/BatchCommandLine.h"
#include "apps/krmodel/Failure.h"
#include "apps/krmodel/InputFile.h"
#include "apps/krmodel/Picture.h"
#include "apps/krmodel/TextureTexts.h"
#include "core/mesh/MeshTextureInfo.h"
#include "core/utility/ImageTool.h"
#include "core/utility/Utility.h"
#include "fileformat/texture/TextureFile.h"

namespace krmodel {

namespace {

constexpr char kSuffix[] = ".texture";

/// Equal names have equal identifiers in a namespace; this is the program's own.
constexpr char kOwnNameSpace[] = "895f1ef3-4bae-4e89-857f-f29083280d7c";

struct MakeOptions {
    QString picture;
    QString output;
    QString name; ///< that of the picture when empty
    QUuid nameSpace = QUuid(QLatin1String(kOwnNameSpace));
    int longestSide = 0; ///< 0 keeps all pixels
    MeshMaterialParameters parameters;
    BatchOptions batch;
};

void RequireTextureName(const QString& fileName)
{
    if (!fileName.endsWith(QLatin1String(kSuffix), Qt::CaseInsensitive))
        throw Failure(ExitCode::Usage, fileName + QStringLiteral(": a texture file's name must end in ") +
                                           QLatin1String(kSuffix));
}

QSize ShrunkSize(const QSize& size, int longestSide)
{
    if (longestSide == 0 || std::max(size.width(), size.height()) <= longestSide)
        return size;
    // A long strip keeps a pixel of width.
    return size.scaled(longestSide, longestSide, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

QImage Decode(QFile& file, int longestSide)
{
    QImage image;
    const auto chooseSize = [longestSide](const QSize& size) {
        return MeshTextureInfo::IsLoadableSize(size) ? std::make_optional(ShrunkSize(size, longestSide))
                                                     : std::nullopt;
    };
    // Reading from a pipe or a device might never end.
    const bool isRead = QFileInfo(file).isFile() && ImageTool::ReadPicture(file, image, chooseSize);
    return isRead ? image : QImage();
}

MeshTextureInfo ReadPicture(const QString& fileName, int longestSide)
{
    RequireReadable(fileName);
    MeshTextureInfo info;
    info.fileName = fileName;
    QFile file(fileName);
    if (info.load(Decode(file, longestSide), false, false, false, longestSide))
        return info;
    RequireRoomForPixels(file, MeshTextureInfo::IsLoadableSize);
    throw Failure(ExitCode::NotReadable,
                  fileName + QStringLiteral(": not readable as a picture, it is damaged, of a format that "
                                            "is not known or larger than 32768 pixels a side or 1 GiB"));
}

/// The library takes what stands in front of the last point for the name.
QString AsFileName(const QString& name)
{
    return name + QLatin1Char('.');
}

void Save(const TextureFile& texture, const PendingFile& output)
{
    QJsonObject object;
    texture.GetSaveObject(object);
    // The library stores a picture of which it cannot make text as none.
    const bool hasPicture = !object[QLatin1String(kImageDataKey)].toString().isEmpty();
    if (!hasPicture || !Utility::SaveJsonFile(object, output.GetName(), QJsonDocument::Indented))
        throw Failure(ExitCode::WriteFailed,
                      output.GetTarget() + (hasPicture
                                                ? QStringLiteral(": cannot write, or the disk is full")
                                                : QStringLiteral(": not written, the picture is too large")));
    output.Commit();
}

ExitCode Make(const MakeOptions& options, const PendingFile& output)
{
    MeshTextureInfo info = ReadPicture(options.picture, options.longestSide);
    if (!options.name.isEmpty())
        info.fileName = AsFileName(options.name);
    TextureFile texture;
    // It cannot fail with a picture, see its documentation.
    static_cast<void>(texture.Load(&info, options.parameters, options.nameSpace));
    Save(texture, output);
    return ExitCode::Done;
}

ExitCode RunMake(const MakeOptions& options)
{
    RequireTextureName(options.output);
    const PendingFile output(options.output);
    return RunTasks({{options.picture, [&] { return Make(options, output); }, {output}}}, options.batch);
}

std::string CheckName(const std::string& text)
{
    const QString name = QString::fromStdString(text);
    return name.contains(QLatin1Char('/')) || name.trimmed().isEmpty()
               ? "'" + text + "' is not a name: it is blank or has a '/'"
               : std::string();
}

std::string CheckNameSpace(const std::string& text)
{
    return QUuid(QString::fromStdString(text)).isNull() ? "'" + text + "' is not a UUID" : std::string();
}

std::string CheckWrap(const std::string& text)
{
    return FindWrap(text) ? std::string() : "'" + text + "' is not one of " + AllWrapNames();
}

std::string CheckColour(const std::string& text)
{
    return QColor::isValidColor(QString::fromStdString(text))
               ? std::string()
               : "'" + text + "' is not a colour: #rrggbb, #aarrggbb or a name such as white";
}

Vector4D<float> ColourOf(const std::string& text)
{
    const QColor colour(QString::fromStdString(text));
    const auto part = [](int byte) { return float(byte) / 255; };
    return {part(colour.red()), part(colour.green()), part(colour.blue()), part(colour.alpha())};
}

void AddIdentity(CLI::App& verb, MakeOptions& options)
{
    AddText(verb, "--name", options.name, "name of the texture; without it that of the picture's file")
        .Value("NAME")
        .Check(CheckName);
    const auto take = [&options](const std::string& text) {
        options.nameSpace = QUuid(QString::fromStdString(text));
    };
    AddText(verb, "--namespace", take,
            "where the identifier is made from the name: equal names have equal "
            "identifiers in one namespace, and others in another")
        .Default(kOwnNameSpace)
        .Value("UUID")
        .Check(CheckNameSpace);
    AddNumber(verb,
              {"--longest-side", "PIXELS", 0, 32768,
               "scale a larger picture down to so many pixels on its longer side; 0 keeps all pixels",
               NumberOption::Kind::Whole},
              options.longestSide);
}

void AddBeyond(CLI::App& verb, MeshMaterialParameters& parameters)
{
    const auto takeWrap = [&parameters](const std::string& name) {
        parameters.wrapS = parameters.wrapT = FindWrap(name)->mode;
    };
    AddText(verb, "--wrap", takeWrap,
            "what shows beyond the picture's edges, the picture again, every "
            "other one mirrored, its edge or the border colour: " +
                AllWrapNames())
        .Default(kWraps[0].name)
        .Value("MODE")
        .Check(CheckWrap);
    const auto takeBorder = [&parameters](const std::string& text) {
        parameters.borderColor = ColourOf(text);
    };
    AddText(verb, "--border", takeBorder,
            "border colour: #rrggbb, #aarrggbb or a name such as white; what is "
            "transparent shows the surface itself")
        .Default(ColourText(parameters.borderColor).toStdString())
        .Value("COLOUR")
        .Check(CheckColour);
}

void AddMapping(CLI::App& verb, MeshMaterialMatrix& matrix)
{
    constexpr double kMost = 1e6;
    const auto pairOf = [](Vector3D<double>& target) {
        return [&target](const std::vector<double>& values) {
            target.x = values[0];
            target.y = values[1];
        };
    };
    AddNumbers(verb,
               {"--offset", "U V", -kMost, kMost,
                "move the texture coordinates to the right and up, in pictures, kept to 4 decimals: 0.5 0 is "
                "half a picture along u"},
               2, pairOf(matrix.translation))
        .Default(PairText(matrix.translation).toStdString());
    AddNumbers(
        verb,
        {"--repeat", "U V", -kMost, kMost,
         "pictures in one unit of the coordinates, kept to 2 decimals; larger makes the picture smaller, "
         "below 0 mirrors it"},
        2, pairOf(matrix.repeat))
        .Default(PairText(matrix.repeat).toStdString());
    AddNumber(
        verb,
        {"--rotation", "DEGREES", -kMost, kMost,
         "turn the texture coordinates counter-clockwise about the picture's middle, kept to 2 decimals"},
        matrix.rotation.z);
}

} // namespace

void AddTextureMake(CLI::App& texture, Command& command)
{
    const auto options = std::make_shared<MakeOptions>();
    CLI::App& verb = AddVerb(texture, "make", "Make a texture file from a picture, replacing the output",
                             command, [options] { return RunMake(*options); });
    AddText(verb, "PICTURE", options->picture, "picture to read: JPEG, PNG, BMP, TGA, TIFF").Required();
    AddText(verb, "OUT.texture", options->output, "texture file to write").Required();
    AddIdentity(verb, *options);
    AddBeyond(verb, options->parameters);
    AddMapping(verb, options->parameters.matrix);
    AddQuiet(verb, options->batch);
    AddLimits(verb, options->batch);
}

} // namespace krmodel
