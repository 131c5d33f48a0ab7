#include "core/mesh/MapStatement_p.h"

#include <algorithm>

#include <QDir>
#include <QFileInfo>

// map statement
//   keyword { option } file name
//   option      "-" word and its arguments; how many and of which kind, the table says
//   file name   the rest of the line, blanks included
//
// Numbers that an option may take or leave make the line ambiguous: "-s 2 2 oaks.png" may mean "oaks.png" or
// "2 oaks.png". Only the folder can tell.

namespace kr {

namespace {

enum class Argument { Number, Word, NumberOrSwitch };

struct MapOption {
    const char* name;
    Argument kind;
    int fewest;
    int most;
};

constexpr MapOption kOptions[] = {
    {"-s", Argument::Number, 1, 3},      {"-o", Argument::Number, 1, 3},
    {"-t", Argument::Number, 1, 3},      {"-bm", Argument::Number, 1, 1},
    {"-mm", Argument::Number, 2, 2},     {"-clamp", Argument::Word, 1, 1},
    {"-blendu", Argument::Word, 1, 1},   {"-blendv", Argument::Word, 1, 1},
    {"-imfchan", Argument::Word, 1, 1},  {"-type", Argument::Word, 1, 1},
    {"-cc", Argument::Word, 1, 1},       {"-boost", Argument::Number, 1, 1},
    {"-texres", Argument::Number, 1, 1},
};

// Of an option not known here whatever looks like an argument is taken for one.
constexpr MapOption kUnknownOption = {"", Argument::NumberOrSwitch, 0, 3};

const MapOption& OptionNamed(const QString& token)
{
    for (const MapOption& option : kOptions)
        if (token.compare(QLatin1String(option.name), Qt::CaseInsensitive) == 0)
            return option;
    return kUnknownOption;
}

// toDouble alone would take the file names "nan" and "inf".
bool IsNumber(const QString& token)
{
    bool isNumber = false;
    token.toDouble(&isNumber);
    return isNumber && (token.back().isDigit() || token.back() == QLatin1Char('.'));
}

bool IsArgument(const QString& token, Argument kind)
{
    switch (kind) {
    case Argument::Number:
        return IsNumber(token);
    case Argument::NumberOrSwitch:
        return IsNumber(token) || token == QLatin1String("on") || token == QLatin1String("off");
    default:
        return true;
    }
}

bool IsOption(const QString& token)
{
    return token.size() > 1 && token.front() == QLatin1Char('-') && !IsNumber(token);
}

// The tokens at which the file name may start: `last` as far behind as possible, the earlier ones if the last
// option gives arguments back that it need not have.
struct NameStart {
    int first = 1;
    int last = 1;
};

NameStart PassOption(const QStringList& tokens, int at)
{
    const MapOption& option = OptionNamed(tokens[at]);
    const int lastToken = tokens.size() - 1;
    int next = at + 1;
    for (int taken = 0; taken < option.most && next < lastToken; ++taken, ++next)
        if (!IsArgument(tokens[next], option.kind))
            break;
    // What is no option may be the begin of a name itself.
    const int first = &option == &kUnknownOption ? at : at + 1 + option.fewest;
    return {std::min(first, next), next};
}

NameStart PassOptions(const QStringList& tokens)
{
    NameStart start;
    while (start.last < tokens.size() - 1 && IsOption(tokens[start.last]))
        start = PassOption(tokens, start.last);
    return start;
}

QString CleanName(QString name)
{
    const QLatin1Char quote('"');
    if (name.size() > 1 && name.startsWith(quote) && name.endsWith(quote))
        name = name.mid(1, name.size() - 2).trimmed();
    return name.replace(QLatin1Char('\\'), QLatin1Char('/'));
}

bool HasDrive(const QString& path)
{
    return path.size() > 2 && path[0].isLetter() && path[1] == QLatin1Char(':') &&
           path[2] == QLatin1Char('/');
}

} // namespace

QStringList FileNamesOfMapStatement(const QStringList& tokens)
{
    QStringList names;
    const NameStart start = PassOptions(tokens);
    for (int at = start.last; at >= start.first; --at) {
        const QString name = CleanName(QStringList(tokens.mid(at)).join(QLatin1Char(' ')));
        if (!name.isEmpty())
            names.append(name);
    }
    return names;
}

QStringList PathsOfMapFile(const QString& fileName, const QString& directory)
{
    const bool isAbsolute = QDir::isAbsolutePath(fileName) || HasDrive(fileName);
    QStringList paths(isAbsolute ? fileName : directory + fileName);
    const QString besideLibrary = directory + QFileInfo(fileName).fileName();
    if (besideLibrary != paths.front())
        paths.append(besideLibrary);
    return paths;
}

} // namespace kr
