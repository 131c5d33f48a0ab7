#include <cstdio>
#include <memory>

#include "apps/krmodel/BatchCommandLine.h"
#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Failure.h"
#include "apps/krmodel/InputFile.h"
#include "apps/krmodel/PathDrawing.h"
#include "apps/krmodel/PathReport.h"
#include "apps/krmodel/Picture.h"
#include "apps/krmodel/PngFile.h"

namespace krmodel {

namespace {

struct Options {
    QString input;
    QString picture; ///< empty: none
    std::optional<QSize> size;
    BatchOptions batch;
};

PathFile LoadPaths(const QString& fileName)
{
    RequireReadable(fileName);
    PathFile file;
    if (!DXFPathFile::ReadDXFPathFile(file.paths, file.names, fileName))
        throw Failure(ExitCode::NotReadable,
                      fileName +
                          QStringLiteral(": not readable as a path file, it is damaged, cut short or of "
                                         "another format"));
    if (Measure(file.paths).points == 0)
        throw Failure(ExitCode::Empty, fileName + QStringLiteral(": holds no point"));
    return file;
}

ExitCode Show(const QString& input)
{
    const PathFile file = LoadPaths(input);
    std::fputs((input + QLatin1Char('\n') + PathTables(file)).toUtf8().constData(), stdout);
    return ExitCode::Done;
}

ExitCode Draw(const Options& options, const PendingFile& output)
{
    const PathFile file = LoadPaths(options.input);
    WritePng(output, EncodePng(DrawPaths(file.paths, options.size.value_or(kUsualPictureSize))));
    return ExitCode::Done;
}

ExitCode RunPaths(const Options& options)
{
    if (options.picture.isEmpty())
        return RunTasks({{options.input, [&] { return Show(options.input); }, {}}}, options.batch);
    RequirePngName(options.picture);
    const PendingFile output(options.picture);
    return RunTasks({{options.input, [&] { return Draw(options, output); }, {output}}}, options.batch);
}

} // namespace

void AddPaths(CLI::App& app, Command& command)
{
    const auto options = std::make_shared<Options>();
    CLI::App& verb =
        AddVerb(app, "paths", "Print what a path file holds: sets, contours, points, bounds; or draw it",
                command, [options] { return RunPaths(*options); });
    AddText(verb, "FILE", options->input, "path file to read").Required();
    const Option picture = AddText(verb, "--picture", options->picture,
                                   "draw the contours into this file instead, PNG; closed ones are filled")
                               .Value("OUT.png");
    AddPictureSize(verb, options->size, "width and height of the picture in pixels").Needs(picture);
    AddQuiet(verb, options->batch);
    AddLimits(verb, options->batch);
}

} // namespace krmodel
