#include "apps/krmodel/Arguments.h"

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "apps/krmodel/Commands.h"

namespace krmodel {

namespace {

constexpr int kSmallestSide = 16;
constexpr int kLargestSide = 4096;

constexpr char kExitCodes[] = "Exit codes:\n"
                              "  0  done\n"
                              "  1  the command line cannot be understood\n"
                              "  2  an input cannot be opened\n"
                              "  3  an input is not readable as a file of its format\n"
                              "  4  an input was read and holds no facet\n"
                              "  5  an output could not be written in full\n"
                              "  6  a limit was hit, or the reader ended unexpectedly\n"
                              "  130  interrupted\n";

constexpr char kFileNames[] =
    "A name that begins with a dash goes behind \"--\", as in: krmodel info -- -part.stl";

/// The texts as they stand on the command line.
struct RawArguments {
    std::vector<std::string> inputs;
    std::string input;
    std::string output;
    std::string size;
    std::string view = kViews[0].name;
    bool isText = false;
    bool isBinary = false;
    bool wantsThumbnail = false;
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
    for (const View& view : kViews)
        if (name == view.name)
            return &view;
    return nullptr;
}

/// "800x600"; a null size for anything else.
QSize ParseSize(const std::string& text)
{
    const QStringList sides = QString::fromStdString(text).split(QLatin1Char('x'));
    if (sides.size() != 2)
        return {};
    const int width = sides[0].toInt(), height = sides[1].toInt();
    const auto isGood = [](int side) { return side >= kSmallestSide && side <= kLargestSide; };
    return isGood(width) && isGood(height) ? QSize(width, height) : QSize();
}

std::string CheckSize(const std::string& text)
{
    if (!ParseSize(text).isEmpty())
        return {};
    return "'" + text + "' is not WIDTHxHEIGHT with both from " + std::to_string(kSmallestSide) + " to " +
           std::to_string(kLargestSide) + " pixels";
}

std::string CheckView(const std::string& text)
{
    return FindView(text) ? std::string() : "'" + text + "' is not one of " + AllViewNames();
}

CLI::App* AddVerb(CLI::App& app, Command command, Arguments& arguments, const char* name, const char* help)
{
    CLI::App* verb = app.add_subcommand(name, help);
    verb->footer(std::string(kFileNames) + "\n\n" + kExitCodes);
    verb->callback([&arguments, command] { arguments.command = command; });
    return verb;
}

void AddInfo(CLI::App& app, RawArguments& raw, Arguments& arguments)
{
    CLI::App* verb =
        AddVerb(app, RunInfo, arguments, "info",
                "Print what model files hold: size, bounds, volume, open edges, objects, materials");
    verb->add_option("FILE", raw.inputs, "model files to read")->required();
}

void AddConvert(CLI::App& app, RawArguments& raw, Arguments& arguments)
{
    CLI::App* verb = AddVerb(app, RunConvert, arguments, "convert",
                             "Write a model in the format of the output's suffix, replacing the output");
    verb->add_option("IN", raw.input, "model file to read")->required();
    verb->add_option("OUT", raw.output, "model file to write")->required();
    CLI::Option* text = verb->add_flag("--ascii", raw.isText, "write the text variant");
    verb->add_flag("--binary", raw.isBinary, "write the binary variant (default where there is one)")
        ->excludes(text);
}

void AddPreview(CLI::App& app, RawArguments& raw, Arguments& arguments)
{
    CLI::App* verb =
        AddVerb(app, RunPreview, arguments, "preview", "Draw a shaded picture of a model; needs no display");
    verb->add_option("IN", raw.input, "model file to read")->required();
    verb->add_option("OUT.png", raw.output, "picture to write, PNG")->required();
    verb->add_option(
            "--size", raw.size,
            "width and height of the picture in pixels; with --thumbnail the largest that it may have")
        ->default_str("800x600")
        ->type_name("WxH")
        ->check(CheckSize);
    CLI::Option* view = verb->add_option("--view", raw.view, "where to look from: " + AllViewNames())
                            ->capture_default_str()
                            ->type_name("NAME")
                            ->check(CheckView);
    verb->add_flag("--thumbnail", raw.wantsThumbnail, "write the picture that the model file keeps instead")
        ->excludes(view);
}

void Understand(const RawArguments& raw, Arguments& arguments)
{
    for (const std::string& input : raw.inputs)
        arguments.inputs << QString::fromStdString(input);
    if (!raw.input.empty())
        arguments.inputs << QString::fromStdString(raw.input);
    arguments.output = QString::fromStdString(raw.output);
    if (raw.isText || raw.isBinary)
        arguments.encoding = raw.isText ? Encoding::Text : Encoding::Binary;
    if (!raw.size.empty())
        arguments.size = ParseSize(raw.size);
    arguments.wantsThumbnail = raw.wantsThumbnail;
    arguments.view = FindView(raw.view);
}

} // namespace

std::optional<ExitCode> ParseArguments(int argc, const char* const* argv, Arguments& arguments)
{
    RawArguments raw;
    CLI::App app("Reads, measures, converts and draws 3D model files (" + KnownSuffixes().toStdString() +
                     ").",
                 "krmodel");
    app.set_version_flag("--version", "krmodel " KRMODEL_VERSION);
    app.require_subcommand(1);
    app.footer("Each command explains itself: krmodel COMMAND --help\n\nFormats:\n" +
               DescribeFormats().toStdString() + "\n" + kExitCodes);
    AddInfo(app, raw, arguments);
    AddConvert(app, raw, arguments);
    AddPreview(app, raw, arguments);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? ExitCode::Done : ExitCode::Usage;
    }
    Understand(raw, arguments);
    return std::nullopt;
}

} // namespace krmodel
