#include <algorithm>
#include <memory>

#include <QFile>
#include <QFileInfo>
#include <QImage>

#include "apps/krmodel/BatchCommandLine.h"
#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Failure.h"
#include "apps/krmodel/InputFile.h"
#include "apps/krmodel/ModelFile.h"
#include "apps/krmodel/Picture.h"
#include "apps/krmodel/Placement.h"
#include "fileformat/image/ImageFile.h"

namespace krmodel {

namespace {

constexpr float kReaderMergeDistanceMm = 0.03F;
/// Half the width of a usual nozzle: what is finer costs facets and does not show.
constexpr double kFinestPixelMm = 0.2;
constexpr int kFewestPixels = 2;                ///< a side; the library's limit
constexpr qint64 kMostPixels = qint64(1) << 29; ///< the library's limit too
constexpr double kLeastMm = 0.001;
constexpr double kMostMm = 1e6;

struct Options {
    QString picture;
    QString output;
    std::optional<Encoding> encoding; ///< none when the person did not say, as below
    double widthMm = 100;
    std::optional<double> depthMm;
    double minHeightMm = 1;
    double maxHeightMm = 3;
    int blurRadius = 0;
    std::optional<int> scalePercent;
    bool isDarkHigh = false;
    BatchOptions batch;
};

/// The library decodes the picture once more, but by then a person knows what is wrong with it.
QSize RequirePicture(const QString& fileName)
{
    RequireReadable(fileName);
    QImage picture;
    if (ImageFile::CheckImageAndParse(fileName, picture) == 0)
        return picture.size();
    QFile file(fileName);
    RequireRoomForPixels(
        file, [](const QSize& size) { return qint64(size.width()) * size.height() <= kMostPixels; });
    throw Failure(ExitCode::NotReadable,
                  fileName + QStringLiteral(": not readable as a picture, it is damaged, too large or of "
                                            "a format that is not known"));
}

double DepthMm(const Options& options, QSize pixels)
{
    return options.depthMm.value_or(options.widthMm * pixels.height() / pixels.width());
}

/// As little as pixels of the finest size need, but never so little that no relief is left.
int UsualScalePercent(const Options& options, QSize pixels)
{
    const double coarserSideMm =
        std::max(options.widthMm / pixels.width(), DepthMm(options, pixels) / pixels.height());
    const int finest = int(std::min(100.0, 100 * coarserSideMm / kFinestPixelMm));
    const int shorterSide = std::min(pixels.width(), pixels.height());
    const int fewest = (100 * kFewestPixels + shorterSide - 1) / shorterSide;
    return std::min(100, std::max(finest, fewest));
}

/// Carries the corner at which the library begins to the origin. Its numbers are halved as it halves them.
Matrix4<double> ToOrigin(float widthMm, float depthMm)
{
    Matrix4<double> placement;
    placement.set(0, 3, -double(widthMm / 2));
    placement.set(1, 3, -double(depthMm / 2));
    return placement;
}

[[noreturn]] void FailTooSmall(const QString& fileName, QSize pixels, int scalePercent)
{
    throw Failure(ExitCode::Empty,
                  fileName + QStringLiteral(": gives no facet, a relief needs %1 pixels a side and there are "
                                            "%2 x %3, used at %4 percent")
                                 .arg(kFewestPixels)
                                 .arg(pixels.width())
                                 .arg(pixels.height())
                                 .arg(scalePercent));
}

std::unique_ptr<Mesh> MakeRelief(const Options& options)
{
    const QSize pixels = RequirePicture(options.picture);
    const float widthMm = float(options.widthMm), depthMm = float(DepthMm(options, pixels));
    const int scalePercent = options.scalePercent.value_or(UsualScalePercent(options, pixels));
    auto mesh = std::make_unique<Mesh>(kReaderMergeDistanceMm);
    if (!ImageFile::LoadFile(options.picture, *mesh, widthMm, depthMm, options.blurRadius,
                             !options.isDarkHigh, float(options.minHeightMm), float(options.maxHeightMm),
                             scalePercent))
        FailTooSmall(options.picture, pixels, scalePercent);
    mesh->SetTransformMatrix(ToOrigin(widthMm, depthMm));
    mesh->SetObjectName(QFileInfo(options.picture).completeBaseName());
    return mesh;
}

ExitCode Relief(const Options& options, const Output& output)
{
    Model model;
    model.meshes.push_back(MakeRelief(options));
    PlaceInMillimetres(model);
    SaveModel(output, model);
    return ExitCode::Done;
}

ExitCode RunRelief(const Options& options)
{
    const Output output = ChooseOutput(options.output, options.encoding);
    return RunTasks({{options.picture, [&] { return Relief(options, output); }, {output.file}}},
                    options.batch);
}

void AddSizes(CLI::App& verb, Options& options)
{
    using Kind = NumberOption::Kind;
    AddNumber(verb,
              {"--width", "MM", kLeastMm, kMostMm,
               "extent along x, from the picture's left edge to its right, in millimetres"},
              options.widthMm);
    AddNumber(verb,
              {"--depth", "MM", kLeastMm, kMostMm,
               "extent along y, from the picture's lower edge to its upper; without it the picture keeps its "
               "proportions"},
              options.depthMm);
    AddNumber(verb,
              {"--min-height", "MM", 0, kMostMm,
               "how thick the relief is where the picture is black; larger makes the plate below stronger, 0 "
               "leaves nothing there"},
              options.minHeightMm);
    AddNumber(verb,
              {"--max-height", "MM", 0, kMostMm,
               "how thick it is where the picture is white; the more above --min-height, the bolder the "
               "relief"},
              options.maxHeightMm);
    AddNumber(verb,
              {"--blur", "PIXELS", 0, 1e6,
               "smooth the picture over so many of its pixels to each side first; larger loses more of the "
               "detail and of the noise, 0 nothing",
               Kind::Whole},
              options.blurRadius);
    AddNumber(
        verb,
        {"--scale", "PERCENT", 1, 100,
         "use the picture at so many percent of its size, 4 facets a pixel; larger shows more and makes "
         "a larger file. Without it no pixel becomes finer than 0.2 mm, which printers seldom show",
         Kind::Whole},
        options.scalePercent);
}

} // namespace

void AddRelief(CLI::App& app, Command& command)
{
    const auto options = std::make_shared<Options>();
    CLI::App& verb = AddVerb(app, "relief",
                             "Make a printable solid from a picture: bright is high, the bottom is flat, a "
                             "corner lies at the origin",
                             command, [options] { return RunRelief(*options); });
    AddText(verb, "PICTURE", options->picture, "picture to read: JPEG, PNG, BMP, TGA, TIFF").Required();
    AddText(verb, "OUT", options->output, "model file to write, in the format of its suffix").Required();
    AddSizes(verb, *options);
    AddFlag(verb, "--dark-is-high", options->isDarkHigh,
            "let black be high instead, as for a picture that light shines through");
    AddEncoding(verb, options->encoding);
    AddQuiet(verb, options->batch);
    AddLimits(verb, options->batch);
}

} // namespace krmodel
