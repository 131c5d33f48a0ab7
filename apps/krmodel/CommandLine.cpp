#include "apps/krmodel/CommandLine.h"

#include <cmath>
#include <vector>

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

CLI::App* AddVerb(CLI::App& app, const char* name, const char* help, Command& command, const Command& work)
{
    CLI::App* verb = app.add_subcommand(name, help);
    verb->footer(std::string(kFileNames) + "\n\n" + kExitCodes);
    verb->callback([&command, work] { command = work; });
    return verb;
}

CLI::Option* AddText(CLI::App& verb, const char* name, QString& text, const char* help)
{
    const auto take = [&text](const std::string& utf8) { text = QString::fromStdString(utf8); };
    return verb.add_option_function<std::string>(name, take, help);
}

CLI::Option* AddFileNames(CLI::App& verb, QStringList& names, const char* help)
{
    const auto take = [&names](const std::vector<std::string>& texts) {
        for (const std::string& utf8 : texts)
            names << QString::fromStdString(utf8);
    };
    return verb.add_option_function<std::vector<std::string>>("FILE", take, help)->required();
}

void AddEncoding(CLI::App& verb, std::optional<Encoding>& encoding)
{
    CLI::Option* text = verb.add_flag_callback(
        "--ascii", [&encoding] { encoding = Encoding::Text; }, "write the text variant");
    verb.add_flag_callback(
            "--binary", [&encoding] { encoding = Encoding::Binary; },
            "write the binary variant (default where there is one)")
        ->excludes(text);
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
    verb.add_flag_callback(
        "--no-prefix", [&options] { options.prefixesFileName = false; },
        "STEP and IGES: name objects without the file's name in front");
}

CLI::Option* AddPictureSize(CLI::App& verb, std::optional<QSize>& size, const char* help)
{
    const auto take = [&size](const std::string& text) { size = ParseSize(text); };
    return verb.add_option_function<std::string>("--size", take, help)
        ->default_str(std::to_string(kUsualPictureSize.width()) + "x" +
                      std::to_string(kUsualPictureSize.height()))
        ->type_name("WxH")
        ->check(CheckSize);
}

CLI::Option* AddNumbers(CLI::App& verb, const NumberOption& option, int count,
                        const std::function<void(const std::vector<double>&)>& take)
{
    const auto takeTexts = [take](const std::vector<std::string>& texts) {
        std::vector<double> numbers;
        for (const std::string& text : texts)
            numbers.push_back(QString::fromStdString(text).toDouble());
        take(numbers);
    };
    return verb.add_option_function<std::vector<std::string>>(option.name, takeTexts, option.help)
        ->expected(count)
        ->allow_extra_args(false) // they are file names
        ->type_name(option.unit)
        ->check([option](const std::string& text) { return CheckNumber(option, text); });
}

const char* DescribeExitCodes()
{
    return kExitCodes;
}

} // namespace krmodel
