#include "apps/krmodel/Manual.h"

#include <functional>
#include <vector>

#include <CLI/CLI.hpp>
#include <QStringList>

#include "apps/krmodel/CommandLine.h"

namespace krmodel {

namespace {

QString Text(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

/// What a person may be shown of a command; the manual itself is no part of it.
std::vector<const CLI::App*> CommandsOf(const CLI::App& app)
{
    return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

std::vector<const CLI::Option*> OptionsOf(const CLI::App& app)
{
    return app.get_options([](const CLI::Option* option) { return !option->get_positional(); });
}

std::vector<const CLI::Option*> OperandsOf(const CLI::App& app)
{
    return app.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

/// "-j", "--jobs".
QStringList NamesOf(const CLI::Option& option)
{
    QStringList names;
    for (const std::string& name : option.get_snames())
        names << QLatin1Char('-') + Text(name);
    for (const std::string& name : option.get_lnames())
        names << QStringLiteral("--") + Text(name);
    return names;
}

QString HelpOf(const CLI::Option& option)
{
    const QString usual = Text(option.get_default_str());
    const QString help = Text(option.get_description());
    return usual.isEmpty() ? help : help + QStringLiteral(" [%1]").arg(usual);
}

/// Calls @p visit for the program and for each of its commands, with the words that lead to it.
void VisitCommands(const CLI::App& app, const QString& path,
                   const std::function<void(const CLI::App& command, const QString& path)>& visit)
{
    visit(app, path);
    for (const CLI::App* command : CommandsOf(app))
        VisitCommands(*command, path + QLatin1Char(' ') + Text(command->get_name()), visit);
}

QString Roff(QString text)
{
    text.replace(QLatin1Char('\\'), QStringLiteral("\\e")).replace(QLatin1Char('-'), QStringLiteral("\\-"));
    // A point or an apostrophe at the start of a line would begin a request.
    text.replace(QStringLiteral("\n."), QStringLiteral("\n\\&."));
    return text.replace(QStringLiteral("\n'"), QStringLiteral("\n\\&'"));
}

QString Bold(const QString& text)
{
    return QStringLiteral("\\fB%1\\fR").arg(Roff(text));
}

QString Slanted(const QString& text)
{
    return text.isEmpty() ? text : QStringLiteral(" \\fI%1\\fR").arg(Roff(text));
}

QString RoffOption(const CLI::Option& option)
{
    QStringList names;
    for (const QString& name : NamesOf(option))
        names << Bold(name);
    return QStringLiteral(".TP\n%1%2\n%3\n")
        .arg(names.join(QStringLiteral(", ")), Slanted(Text(option.get_type_name())), Roff(HelpOf(option)));
}

QString RoffCommand(const CLI::App& command, const QString& path)
{
    QString operands;
    for (const CLI::Option* operand : OperandsOf(command))
        operands += Slanted(Text(operand->get_name(true)));
    QString text = QStringLiteral(".SS %1%2\n%3\n")
                       .arg(Bold(path.trimmed()), operands, Roff(Text(command.get_description())));
    for (const CLI::Option* option : OptionsOf(command))
        text += RoffOption(*option);
    return text;
}

/// Lines as they are.
QString RoffLines(const QString& lines)
{
    return QStringLiteral(".nf\n%1\n.fi\n").arg(Roff(lines.trimmed()));
}

QStringList WordsOf(const std::vector<const CLI::App*>& commands)
{
    QStringList words;
    for (const CLI::App* command : commands)
        words << Text(command->get_name());
    return words;
}

QStringList WordsOf(const std::vector<const CLI::Option*>& options)
{
    QStringList words;
    for (const CLI::Option* option : options)
        words << NamesOf(*option);
    return words;
}

/// In single quotes, where every letter stands for itself.
QString Quoted(QString text)
{
    return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QStringLiteral("'\\''")) + QLatin1Char('\'');
}

/// The shells' way to find the command that a line is about: all of its words that lead on.
QString QuotedPaths(const CLI::App& app, const QString& between)
{
    QStringList paths;
    VisitCommands(app, {}, [&](const CLI::App&, const QString& path) {
        if (!path.isEmpty())
            paths << Quoted(path);
    });
    return paths.join(between);
}

/// "name:what it is" for zsh, in which a colon ends the name.
QString ZshEntry(QString name, const QString& help)
{
    return QLatin1Char(' ') +
           Quoted(name.replace(QLatin1Char(':'), QStringLiteral("\\:")) + QLatin1Char(':') + help);
}

QString FishLine(const QString& condition, const QString& what, const QString& help)
{
    return QStringLiteral("complete -c krmodel -n %1 %2 -d %3\n").arg(Quoted(condition), what, Quoted(help));
}

/// "-s j -l jobs -r"
QString FishOption(const CLI::Option& option)
{
    QString text;
    for (const std::string& name : option.get_snames())
        text += QStringLiteral("-s %1 ").arg(Text(name));
    for (const std::string& name : option.get_lnames())
        text += QStringLiteral("-l %1 ").arg(Text(name));
    return text + (option.get_items_expected_max() > 0 ? QStringLiteral("-r") : QString());
}

} // namespace

QString ManualPage(const CLI::App& app)
{
    QString page = QStringLiteral(".TH KRMODEL 1 \"\" \"krmodel %1\" \"User Commands\"\n"
                                  ".SH NAME\nkrmodel \\- read, check, convert and draw 3D model files\n"
                                  ".SH SYNOPSIS\n\\fBkrmodel\\fR \\fICOMMAND\\fR [\\fIOPTION\\fR]... "
                                  "[\\fIFILE\\fR]...\n.SH DESCRIPTION\n%2\n.SH COMMANDS\n")
                       .arg(QStringLiteral(KRMODEL_VERSION), Roff(Text(app.get_description())));
    VisitCommands(app, {}, [&](const CLI::App& command, const QString& path) {
        page += path.isEmpty() ? QString() : RoffCommand(command, path);
    });
    page += QStringLiteral(".SH FORMATS\n") + RoffLines(DescribeFormats());
    const QString codes = QString::fromUtf8(DescribeExitCodes());
    return page + QStringLiteral(".SH EXIT STATUS\n") + RoffLines(codes.section(QLatin1Char('\n'), 1));
}

QString BashCompletion(const CLI::App& app)
{
    QString cases;
    VisitCommands(app, {}, [&](const CLI::App& command, const QString& path) {
        cases += QStringLiteral("    %1) commands=%2 options=%3 ;;\n")
                     .arg(Quoted(path), Quoted(WordsOf(CommandsOf(command)).join(QLatin1Char(' '))),
                          Quoted(WordsOf(OptionsOf(command)).join(QLatin1Char(' '))));
    });
    return QStringLiteral("# bash completion for krmodel\n"
                          "_krmodel() {\n"
                          "    local at= commands= options= i\n"
                          "    for ((i = 1; i < COMP_CWORD; ++i)); do\n"
                          "        case \"$at ${COMP_WORDS[i]}\" in\n"
                          "        %1) at=\"$at ${COMP_WORDS[i]}\" ;;\n"
                          "        esac\n"
                          "    done\n"
                          "    case \"$at\" in\n"
                          "%2"
                          "    esac\n"
                          "    [[ $2 == -* ]] && commands=$options\n"
                          "    # Without a word of its own the shell completes file names.\n"
                          "    mapfile -t COMPREPLY < <(compgen -W \"$commands\" -- \"$2\")\n"
                          "}\n"
                          "complete -o default -F _krmodel krmodel\n")
        .arg(QuotedPaths(app, QStringLiteral(" | ")), cases);
}

QString ZshCompletion(const CLI::App& app)
{
    QString cases;
    VisitCommands(app, {}, [&](const CLI::App& command, const QString& path) {
        QString commands, options;
        for (const CLI::App* next : CommandsOf(command))
            commands += ZshEntry(Text(next->get_name()), Text(next->get_description()));
        for (const CLI::Option* option : OptionsOf(command))
            for (const QString& name : NamesOf(*option))
                options += ZshEntry(name, HelpOf(*option));
        cases += QStringLiteral("    (%1) commands=(%2) options=(%3) ;;\n")
                     .arg(Quoted(path), commands.trimmed(), options.trimmed());
    });
    return QStringLiteral("#compdef krmodel\n"
                          "_krmodel() {\n"
                          "    local at='' word\n"
                          "    local -a commands options\n"
                          "    for word in ${words[2,CURRENT-1]}; do\n"
                          "        case \"$at $word\" in\n"
                          "        (%1) at=\"$at $word\" ;;\n"
                          "        esac\n"
                          "    done\n"
                          "    case \"$at\" in\n"
                          "%2"
                          "    esac\n"
                          "    if [[ $PREFIX == -* ]]; then\n"
                          "        _describe -o option options\n"
                          "    elif (( $#commands )); then\n"
                          "        _describe command commands\n"
                          "    else\n"
                          "        _files\n"
                          "    fi\n"
                          "}\n"
                          "_krmodel \"$@\"\n")
        .arg(QuotedPaths(app, QStringLiteral(" | ")), cases);
}

QString FishCompletion(const CLI::App& app)
{
    QString lines = QStringLiteral("# fish completion for krmodel\n");
    VisitCommands(app, {}, [&](const CLI::App& command, const QString& path) {
        const QStringList next = WordsOf(CommandsOf(command));
        QStringList seen;
        for (const QString& word : path.split(QLatin1Char(' '), Qt::SkipEmptyParts))
            seen << QStringLiteral("__fish_seen_subcommand_from ") + word;
        if (!next.isEmpty())
            seen << QStringLiteral("not __fish_seen_subcommand_from ") + next.join(QLatin1Char(' '));
        const QString condition = seen.join(QStringLiteral("; and "));
        for (const CLI::App* verb : CommandsOf(command))
            lines += FishLine(condition, QStringLiteral("-f -a ") + Text(verb->get_name()),
                              Text(verb->get_description()));
        for (const CLI::Option* option : OptionsOf(command))
            lines += FishLine(condition, FishOption(*option), HelpOf(*option));
    });
    return lines;
}

} // namespace krmodel
