#include "apps/krmodel/CommandLine.h"

#include <cmath>

#include <CLI/CLI.hpp>

namespace krmodel {

namespace {

constexpr int kSmallestSide = 16;
constexpr int kLargestSide = 4096;

constexpr char kExitCodes[] =
    "Exit codes:\n"
    "  0  done\n"
    "  1  the command line cannot be understood\n"
    "  2  an input cannot be opened\n"
    "  3  an input is not readable as a file of its format\n"
    "  4  an input was read and holds nothing to work on: no facet, picture or point\n"
    "  5  an output could not be written in full, or did not come out right\n"
    "  6  a limit was hit, or the reader ended unexpectedly\n"
    "  130  interrupted\n";

constexpr char kFileNames[] =
    "A name that begins with a dash goes behind \"--\", as in: krmodel info -- -part.stl";

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

std::string CheckNumber(const NumberOption& option, const std::string& text)
{
    bool isNumber = false;
    const double number = QString::fromStdString(text).toDouble(&isNumber);
    const bool isWhole = option.kind == NumberOption::Kind::Whole;
    if (isNumber && number >= option.least && number <= option.most &&
        (!isWhole || std::floor(number) == number))
        return {};
    return "'" + text + "' is not a " + (isWhole ? "whole " : "") + "number from " +
           NumberText(option.least).toStdString() + " to " + NumberText(option.most).toStdString();
}

} // namespace

Option Option::Required() const
{
    m_option->required();
    return *this;
}

Option Option::Default(const std::string& text) const
{
    m_option->default_str(text);
    return *this;
}

Option Option::Value(const char* name) const
{
    m_option->type_name(name);
    return *this;
}

Option Option::Check(const std::function<std::string(const std::string&)>& check) const
{
    m_option->check(check);
    return *this;
}

Option Option::OneOf(const std::vector<std::string>& texts) const
{
    m_option->check(CLI::IsMember(texts));
    return *this;
}

Option Option::Needs(const Option& other) const
{
    m_option->needs(other.m_option);
    return *this;
}

Option Option::Excludes(const Option& other) const
{
    m_option->excludes(other.m_option);
    return *this;
}

CLI::App& AddVerb(CLI::App& app, const char* name, const char* help, Command& command, const Command& work)
{
    return AddVerb(app, name, help, [&command, work] { command = work; });
}

CLI::App& AddVerb(CLI::App& app, const char* name, const char* help, const std::function<void()>& choose)
{
    CLI::App* verb = app.add_subcommand(name, help);
    verb->footer(std::string(kFileNames) + "\n\n" + kExitCodes);
    verb->callback(choose);
    return *verb;
}

CLI::App& AddGroup(CLI::App& app, const char* name, const char* help, const std::string& footer)
{
    CLI::App* group = app.add_subcommand(name, help);
    group->require_subcommand(1);
    group->footer(footer);
    return *group;
}

void AddToHelp(CLI::App& verb, const QString& text)
{
    verb.footer(text.toStdString() + "\n\n" + verb.get_footer());
}

Option AddFlag(CLI::App& verb, const char* name, bool& isSet, const char* help)
{
    return Option(*verb.add_flag(name, isSet, help));
}

Option AddFlag(CLI::App& verb, const char* name, const std::function<void()>& take, const char* help)
{
    return Option(*verb.add_flag_callback(name, take, help));
}

Option AddText(CLI::App& verb, const char* name, QString& text, const char* help)
{
    return AddText(
        verb, name, [&text](const std::string& utf8) { text = QString::fromStdString(utf8); }, help);
}

Option AddText(CLI::App& verb, const char* name, const std::function<void(const std::string&)>& take,
               const std::string& help)
{
    return Option(*verb.add_option_function<std::string>(name, take, help));
}

Option AddFileNames(CLI::App& verb, QStringList& names, const char* help)
{
    const auto take = [&names](const std::vector<std::string>& texts) {
        for (const std::string& utf8 : texts)
            names << QString::fromStdString(utf8);
    };
    return Option(*verb.add_option_function<std::vector<std::string>>("FILE", take, help)->required());
}

void AddEncoding(CLI::App& verb, std::optional<Encoding>& encoding)
{
    const Option text = AddFlag(
        verb, "--ascii", [&encoding] { encoding = Encoding::Text; }, "write the text variant");
    AddFlag(
        verb, "--binary", [&encoding] { encoding = Encoding::Binary; },
        "write the binary variant (default where there is one)")
        .Excludes(text);
}

void AddReading(CLI::App& verb, ReadOptions& options)
{
    AddNumber(verb,
              {"--deflection", "N", 0.0001, 1000,
               "STEP and IGES: how far facets may lie from the true surface, in 1/1000 of four times the "
               "longest side of a solid (0.1 is 0.04 mm for a part of 100 mm), in mm for a loose face; "
               "smaller is finer, slower and larger"},
              options.deflection);
    AddNumber(verb,
              {"--angle", "DEGREES", 0.1, 180,
               "STEP and IGES: the largest angle between facets along a curve; smaller is smoother"},
              options.angle);
    AddFlag(
        verb, "--no-prefix", [&options] { options.prefixesFileName = false; },
        "STEP and IGES: name objects without the file's name in front");
}

Option AddPictureSize(CLI::App& verb, std::optional<QSize>& size, const char* help)
{
    const auto take = [&size](const std::string& text) { size = ParseSize(text); };
    return AddText(verb, "--size", take, help)
        .Default(std::to_string(kUsualPictureSize.width()) + "x" + std::to_string(kUsualPictureSize.height()))
        .Value("WxH")
        .Check(CheckSize);
}

Option AddNumbers(CLI::App& verb, const NumberOption& option, int count,
                  const std::function<void(const std::vector<double>&)>& take)
{
    const auto takeTexts = [take](const std::vector<std::string>& texts) {
        std::vector<double> numbers;
        for (const std::string& text : texts)
            numbers.push_back(QString::fromStdString(text).toDouble());
        take(numbers);
    };
    CLI::Option* added =
        verb.add_option_function<std::vector<std::string>>(option.name, takeTexts, option.help);
    added->expected(count)->allow_extra_args(false); // they are file names
    return Option(*added).Value(option.unit).Check([option](const std::string& text) {
        return CheckNumber(option, text);
    });
}

const char* DescribeExitCodes()
{
    return kExitCodes;
}

} // namespace krmodel
