#include <algorithm>
#include <iterator>
#include <memory>

#include <QImage>

#include "apps/krmodel/BatchCommandLine.h"
#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Failure.h"
#include "apps/krmodel/ModelFile.h"
#include "apps/krmodel/Picture.h"
#include "apps/krmodel/Placement.h"
#include "apps/krmodel/PngFile.h"
#include "apps/krmodel/Renderer.h"

namespace krmodel {

namespace {

struct Options {
    QString input;
    QString output;
    std::optional<QSize> size; ///< none when the person did not say
    const View* view = &kViews[0];
    bool wantsThumbnail = false;
    bool takesAnyName = false;
    ReadOptions reading;
    BatchOptions batch;
};

std::string AllViewNames()
{
    std::string names;
    for (const View& view : kViews)
        names += std::string(names.empty() ? "" : ", ") + view.name;
    return names;
}

const View* FindView(const std::string& name)
{
    const auto found = std::find_if(std::begin(kViews), std::end(kViews),
                                    [&](const View& view) { return name == view.name; });
    return found == std::end(kViews) ? nullptr : found;
}

std::string CheckView(const std::string& text)
{
    return FindView(text) ? std::string() : "'" + text + "' is not one of " + AllViewNames();
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

QByteArray Drawing(Model& model, const Options& options)
{
    PlaceInMillimetres(model);
    return EncodePng(RenderModel(model, *options.view, options.size.value_or(kUsualPictureSize)));
}

ExitCode Preview(const Options& options, const PendingFile& output)
{
    LoadedModel loaded = LoadModel(options.input, options.reading);
    WritePng(output, options.wantsThumbnail
                         ? StoredPicture(options.input, loaded.model.thumbnail, options.size)
                         : Drawing(loaded.model, options));
    return ExitCode::Done;
}

ExitCode RunPreview(const Options& options)
{
    if (!options.takesAnyName)
        RequirePngName(options.output);
    const PendingFile output(options.output);
    return RunTasks({{options.input, [&] { return Preview(options, output); }, {output}}}, options.batch);
}

CLI::Option* AddView(CLI::App& verb, const View*& view)
{
    const auto take = [&view](const std::string& name) { view = FindView(name); };
    return verb.add_option_function<std::string>("--view", take, "where to look from: " + AllViewNames())
        ->default_str(view->name)
        ->type_name("NAME")
        ->check(CheckView);
}

} // namespace

void AddPreview(CLI::App& app, Command& command)
{
    const auto options = std::make_shared<Options>();
    CLI::App* verb = AddVerb(app, "preview", "Draw a shaded picture of a model; needs no display", command,
                             [options] { return RunPreview(*options); });
    AddText(*verb, "IN", options->input, "model file to read")->required();
    AddText(*verb, "OUT.png", options->output, "picture to write, PNG")->required();
    AddPictureSize(
        *verb, options->size,
        "width and height of the picture in pixels; with --thumbnail the largest that it may have");
    CLI::Option* view = AddView(*verb, options->view);
    verb->add_flag("--thumbnail", options->wantsThumbnail,
                   "write the picture that the model file keeps instead")
        ->excludes(view);
    verb->add_flag("--any-name", options->takesAnyName,
                   "write the picture, a PNG, under any name, as file managers give it");
    AddReading(*verb, options->reading);
    AddQuiet(*verb, options->batch);
    AddLimits(*verb, options->batch);
}

} // namespace krmodel
