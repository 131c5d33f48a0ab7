#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <QSize>
#include <QString>
#include <QStringList>

#include "apps/krmodel/ExitCode.h"
#include "apps/krmodel/Formats.h"
#include "apps/krmodel/Texts.h"

namespace CLI {
class App;
class Option;
} // namespace CLI

/// What the commands' options are made of. What an option sets must live as long as the command's work, which
/// is to hold it. Commands see no more of CLI11 than that it keeps the tree of commands: its headers take
/// seconds to compile.
namespace krmodel {

/// What the program is to do. @throws Failure
using Command = std::function<ExitCode()>;

/// An option or operand that was added, to say more of it. A handle: the command holds what it stands for.
class Option {
public:
    explicit Option(CLI::Option& option) : m_option(&option) {}

    Option Required() const;
    /// What help shows in brackets.
    Option Default(const std::string& text) const;
    /// What help calls the value.
    Option Value(const char* name) const;
    /// @param check  says what is wrong with a text of the command line, or nothing
    Option Check(const std::function<std::string(const std::string& text)>& check) const;
    Option OneOf(const std::vector<std::string>& texts) const;
    Option Needs(const Option& other) const;
    Option Excludes(const Option& other) const;

private:
    CLI::Option* m_option;
};

/// Adds a command; @p command becomes @p work when it is the one asked for.
CLI::App& AddVerb(CLI::App& app, const char* name, const char* help, Command& command, const Command& work);

/// Adds a command; @p choose is called when it is the one asked for, while the command line is still there.
CLI::App& AddVerb(CLI::App& app, const char* name, const char* help, const std::function<void()>& choose);

/// Adds a command that is to be followed by one of its own, which are added to it.
/// @param footer  what its help ends with
CLI::App& AddGroup(CLI::App& app, const char* name, const char* help, const std::string& footer);

/// Adds a text to the help of a command, before what every command says at its end.
void AddToHelp(CLI::App& verb, const QString& text);

/// Adds an option without a value.
Option AddFlag(CLI::App& verb, const char* name, bool& isSet, const char* help);
Option AddFlag(CLI::App& verb, const char* name, const std::function<void()>& take, const char* help);

/// Adds a text, of the command line's UTF-8.
Option AddText(CLI::App& verb, const char* name, QString& text, const char* help);
Option AddText(CLI::App& verb, const char* name, const std::function<void(const std::string& utf8)>& take,
               const std::string& help);

/// Adds file names, one or more.
Option AddFileNames(CLI::App& verb, QStringList& names, const char* help);

/// Adds --ascii and --binary.
void AddEncoding(CLI::App& verb, std::optional<Encoding>& encoding);

constexpr QSize kUsualPictureSize(800, 600);

/// Adds --size, of which the usual size is shown as default.
Option AddPictureSize(CLI::App& verb, std::optional<QSize>& size, const char* help);

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
Option AddNumbers(CLI::App& verb, const NumberOption& option, int count,
                  const std::function<void(const std::vector<double>&)>& take);

/// Adds a number, with its value as default.
template<class Number>
Option AddNumber(CLI::App& verb, const NumberOption& option, Number& number)
{
    return AddNumbers(verb, option, 1, [&number](const auto& values) { number = Number(values[0]); })
        .Default(NumberText(double(number)).toStdString());
}

/// Adds a number that need not be said.
template<class Number>
Option AddNumber(CLI::App& verb, const NumberOption& option, std::optional<Number>& number)
{
    return AddNumbers(verb, option, 1, [&number](const auto& values) { number = Number(values[0]); });
}

/// The exit codes, a line each.
const char* DescribeExitCodes();

} // namespace krmodel
