#include <cstdio>
#include <memory>

#include <QImage>

#include "apps/krmodel/BatchCommandLine.h"
#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Failure.h"
#include "apps/krmodel/ModelFile.h"
#include "apps/krmodel/OutputNames.h"
#include "apps/krmodel/Picture.h"
#include "apps/krmodel/Placement.h"
#include "apps/krmodel/PngFile.h"
#include "apps/krmodel/PreviewLook.h"
#include "apps/krmodel/Renderer.h"
#include "apps/krmodel/Stage.h"

namespace krmodel {

namespace {

struct Options {
    QStringList files;
    QString directory;
    std::optional<QSize> size; ///< none when the person did not say
    View view = kViews[0];
    Background background;
    bool wantsThumbnail = false;
    bool takesAnyName = false;
    ReadOptions reading;
    BatchOptions batch;
};

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

QByteArray Drawing(Model& model, const Options& options)
{
    EnterStage(Stage::Drawing);
    PlaceInMillimetres(model);
    return EncodePng(
        RenderModel(model, options.view, options.size.value_or(kUsualPictureSize), options.background));
}

/// Of many pictures each has a line.
void PrintLine(const QString& input, const PendingFile& output)
{
    const QString line = input + QStringLiteral(": drawn as ") + output.GetTarget() + QLatin1Char('\n');
    std::fputs(line.toUtf8().constData(), stdout);
}

ExitCode Preview(const Options& options, const QString& input, const PendingFile& output)
{
    LoadedModel loaded = LoadModel(input, options.reading);
    WritePng(output, options.wantsThumbnail ? StoredPicture(input, loaded.model.thumbnail, options.size)
                                            : Drawing(loaded.model, options));
    if (!options.directory.isEmpty() && !options.batch.isQuiet)
        PrintLine(input, output);
    return ExitCode::Done;
}

Task TaskOf(const Options& options, const QString& input, const QString& output)
{
    const PendingFile file(output);
    return {input, [&options, input, file] { return Preview(options, input, file); }, {file}};
}

ExitCode RunPreview(const Options& options)
{
    const QStringList& files = options.files;
    if (options.directory.isEmpty()) {
        if (files.size() != 2)
            throw Failure(ExitCode::Usage,
                          QStringLiteral("name one model file and one picture, or any number of model files "
                                         "and --directory"));
        if (!options.takesAnyName)
            RequirePngName(files[1]);
        else if (AreOneFile(files[0], files[1]))
            throw Failure(ExitCode::Usage, files[1] + QStringLiteral(": is the model file itself"));
        return RunTasks({TaskOf(options, files[0], files[1])}, options.batch);
    }
    const QStringList outputs = NameOutputs(files, options.directory, QStringLiteral("png"));
    std::vector<Task> tasks;
    for (int i = 0; i < files.size(); ++i)
        tasks.push_back(TaskOf(options, files[i], outputs[i]));
    return RunTasks(tasks, options.batch);
}

Option AddPictures(CLI::App& verb, Options& options)
{
    AddFileNames(
        verb, options.files,
        "IN OUT.png: the model file to read and the picture to write; or with --directory any number "
        "of model files to read");
    return AddText(verb, "--directory", options.directory,
                   "draw each model into a PNG file of its name, here")
        .Value("DIRECTORY");
}

} // namespace

void AddPreview(CLI::App& app, Command& command)
{
    const auto options = std::make_shared<Options>();
    options->batch.form = Form::Lines;
    CLI::App& verb = AddVerb(app, "preview", "Draw shaded pictures of models; needs no display", command,
                             [options] { return RunPreview(*options); });
    const Option directory = AddPictures(verb, *options);
    AddPictureSize(
        verb, options->size,
        "width and height of the picture in pixels; with --thumbnail the largest that it may have");
    const Option view = AddView(verb, options->view);
    const Option background = AddBackground(verb, options->background);
    AddFlag(verb, "--thumbnail", options->wantsThumbnail,
            "write the picture that the model file keeps instead")
        .Excludes(view)
        .Excludes(background);
    AddFlag(verb, "--any-name", options->takesAnyName,
            "write the picture, a PNG, under any name, as file managers give it")
        .Excludes(directory);
    AddReading(verb, options->reading);
    AddQuiet(verb, options->batch, "show no progress, and no line for each picture");
    AddJobs(verb, options->batch);
    AddLimits(verb, options->batch);
}

} // namespace krmodel
