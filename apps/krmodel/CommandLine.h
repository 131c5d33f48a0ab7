#pragma once

#include <functional>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>
#include <QSize>
#include <QString>
#include <QStringList>

#include "apps/krmodel/ExitCode.h"
#include "apps/krmodel/Formats.h"
#include "apps/krmodel/Texts.h"

/// What the commands' options are made of. What an option sets must live as long as the command's work, which
/// is to hold it.
namespace krmodel {

/// What the program is to do. @throws Failure
using Command = std::function<ExitCode()>;

/// Adds a command; @p command becomes @p work when it is the one asked for.
CLI::App* AddVerb(CLI::App& app, const char* name, const char* help, Command& command, const Command& work);

/// Adds a text, of the command line's UTF-8.
CLI::Option* AddText(CLI::App& verb, const char* name, QString& text, const char* help);

/// Adds file names, one or more.
CLI::Option* AddFileNames(CLI::App& verb, QStringList& names, const char* help);

/// Adds --ascii and --binary.
void AddEncoding(CLI::App& verb, std::optional<Encoding>& encoding);

constexpr QSize kUsualPictureSize(800, 600);

/// Adds --size, of which the usual size is shown as default.
CLI::Option* AddPictureSize(CLI::App& verb, std::optional<QSize>& size, const char* help);

/// Adds --deflection, --angle and --no-prefix.
void AddReading(CLI::App& verb, ReadOptions& options);

struct NumberOption {
    enum class Kind { Any, Whole };

    const char* name;
    const char* unit;
    double least;
    double most;
    const char* help;
    Kind kind = Kind::Any;
};

/// Adds an option that takes @p count numbers.
CLI::Option* AddNumbers(CLI::App& verb, const NumberOption& option, int count,
                        const std::function<void(const std::vector<double>&)>& take);

/// Adds a number, with its value as default.
template<class Number>
CLI::Option* AddNumber(CLI::App& verb, const NumberOption& option, Number& number)
{
    return AddNumbers(verb, option, 1, [&number](const auto& values) { number = Number(values[0]); })
        ->default_str(NumberText(double(number)).toStdString());
}

/// Adds a number that need not be said.
template<class Number>
CLI::Option* AddNumber(CLI::App& verb, const NumberOption& option, std::optional<Number>& number)
{
    return AddNumbers(verb, option, 1, [&number](const auto& values) { number = Number(values[0]); });
}

/// The exit codes, a line each.
const char* DescribeExitCodes();

} // namespace krmodel
