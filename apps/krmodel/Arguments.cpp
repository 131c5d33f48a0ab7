#include "apps/krmodel/Arguments.h"

#include <CLI/CLI.hpp>

#include "apps/krmodel/Commands.h"

namespace krmodel {

namespace {

// In the order of the help text.
constexpr void (*kAdders[])(CLI::App&, Command&) = {AddInfo,    AddCheck, AddConvert, AddPreview, AddRelief,
                                                    AddTexture, AddPaths, AddFormats, AddManual};

} // namespace

std::optional<ExitCode> ParseArguments(int argc, const char* const* argv, Command& command)
{
    CLI::App app("Reads, measures, checks, converts and draws 3D model files (" +
                     KnownSuffixes().toStdString() +
                     "), makes reliefs from pictures, and works on texture and path files.",
                 "krmodel");
    app.set_version_flag("--version", "krmodel " KRMODEL_VERSION);
    app.require_subcommand(1);
    app.footer("Each command explains itself: krmodel COMMAND --help\n\nFormats:\n" +
               DescribeFormats().toStdString() + "\n" + DescribeExitCodes());
    for (const auto& add : kAdders)
        add(app, command);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? ExitCode::Done : ExitCode::Usage;
    }
    return std::nullopt;
}

} // namespace krmodel
