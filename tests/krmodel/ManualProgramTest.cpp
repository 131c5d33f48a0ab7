#include "tests/krmodel/ProgramSupport.h"

namespace {

// Each command with its operands as --help has them.
constexpr const char* kCommands[] = {"info",   "check",        "convert",      "preview",
                                     "relief", "texture make", "texture show", "texture extract",
                                     "paths",  "formats",      "manual"};

class KrmodelManual : public Krmodel {
protected:
    /// Writes what the program prints for a shell or for man.
    QString Made(const char* kind) const
    {
        const ProgramRun run = Run({QStringLiteral("manual"), QString::fromUtf8(kind)});
        EXPECT_EQ(run.exitCode, Done) << kind;
        EXPECT_EQ(run.errors, QString()) << kind;
        Write(kind, run.output.toUtf8());
        return run.output;
    }
    /// What a shell prints, in lines, sorted.
    QStringList Lines(const char* shell, const QStringList& arguments) const
    {
        const ProgramRun run = RunProgram(QString::fromUtf8(shell), arguments, Path("."));
        EXPECT_EQ(run.exitCode, 0) << run.errors.toStdString();
        EXPECT_EQ(run.errors, QString());
        QStringList lines = run.output.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        lines.sort();
        return lines;
    }
    /// The long options in a command's own help.
    QStringList OptionsInHelp(const char* command) const
    {
        QStringList names;
        const QString help = Run(Words(command) + QStringList(QStringLiteral("--help"))).output;
        QRegularExpression option(QStringLiteral("^  (?:-\\w,)?(--[\\w-]+)"),
                                  QRegularExpression::MultilineOption);
        for (auto match = option.globalMatch(help); match.hasNext();)
            names << match.next().captured(1);
        names.sort();
        EXPECT_TRUE(names.contains(QStringLiteral("--help"))) << command;
        return names;
    }
    QStringList BashOffers(const char* words) const
    {
        const QStringList line = QString::fromUtf8(words).split(QLatin1Char(' '));
        constexpr char kStage[] = "set -eu; . ./bash; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); "
                                  "_krmodel krmodel \"${!#}\"; printf '%s\\n' \"${COMPREPLY[@]}\"";
        const QStringList options = {QStringLiteral("-c"), QString::fromUtf8(kStage), QStringLiteral("bash")};
        return Lines("bash", options + line);
    }
    QStringList ZshOffers(const char* words) const
    {
        // In the place of zsh's own, which need a terminal.
        constexpr char kStage[] = "_describe() { local list=${@[-1]}; print -rl -- ${(P)list%%:*}; }; "
                                  "_files() { print -r -- FILES; }; "
                                  "words=(\"$@\"); CURRENT=$#; PREFIX=${@[-1]}; set --; . ./zsh";
        const QStringList line = QString::fromUtf8(words).split(QLatin1Char(' '));
        const QStringList options = {QStringLiteral("-f"), QStringLiteral("-c"), QString::fromUtf8(kStage),
                                     QStringLiteral("zsh")};
        return Lines("zsh", options + line);
    }
    QStringList FishOffers(const char* words) const
    {
        QStringList offers =
            Lines("fish", {QStringLiteral("--no-config"), QStringLiteral("-c"),
                           QStringLiteral("source ./fish; complete -C '%1'").arg(QString::fromUtf8(words))});
        return offers.replaceInStrings(QRegularExpression(QStringLiteral("\t.*")), QString());
    }
};

QStringList Sorted(const char* words)
{
    QStringList list = Words(words);
    list.sort();
    return list;
}

TEST_F(KrmodelManual, PageHasEveryCommandWithEachOfItsOptions)
{
    const QString page = Made("man");
    for (const char* command : kCommands) {
        const QString head = QStringLiteral(".SS \\fB%1\\fR").arg(QLatin1String(command));
        const int begin = page.indexOf(head);
        ASSERT_GE(begin, 0) << command;
        const QString section = page.mid(begin, page.indexOf(QStringLiteral("\n.S"), begin + 1) - begin);
        for (QString name : OptionsInHelp(command))
            EXPECT_TRUE(section.contains(name.replace(QLatin1Char('-'), QStringLiteral("\\-"))))
                << command << ' ' << name.toStdString();
    }
    EXPECT_TRUE(page.contains(QStringLiteral("\n.SH EXIT STATUS\n")));
    EXPECT_TRUE(page.contains(QStringLiteral("\n  130  interrupted\n")));
    EXPECT_TRUE(page.contains(QStringLiteral("STL (.stl)")));
}

TEST_F(KrmodelManual, PageIsUnderstoodByTheProgramsThatSetIt)
{
    Made("man");
    EXPECT_EQ(Lines("groff", Words("-man -ww -z -Tutf8 man")), QStringList());
    EXPECT_FALSE(Lines("groff", Words("-man -Tascii man")).isEmpty());
}

TEST_F(KrmodelManual, BashCompletesCommandsAndTheirOptions)
{
    Made("bash");
    EXPECT_EQ(BashOffers("krmodel "),
              Sorted("info check convert preview relief texture paths formats manual"));
    EXPECT_EQ(BashOffers("krmodel p"), Sorted("paths preview"));
    EXPECT_EQ(BashOffers("krmodel texture "), Sorted("make show extract"));
    EXPECT_EQ(BashOffers("krmodel texture make --w"), Sorted("--wrap"));
    EXPECT_EQ(BashOffers("krmodel convert a.stl --un"), Sorted("--unit"));
}

TEST_F(KrmodelManual, BashLeavesFileNamesToItself)
{
    EXPECT_TRUE(Made("bash").endsWith(QStringLiteral("complete -o default -F _krmodel krmodel\n")));
    EXPECT_EQ(BashOffers("krmodel info "), QStringList());
}

TEST_F(KrmodelManual, ZshCompletesCommandsOptionsAndFileNames)
{
    EXPECT_TRUE(Made("zsh").startsWith(QStringLiteral("#compdef krmodel\n")));
    EXPECT_EQ(ZshOffers("krmodel "),
              Sorted("info check convert preview relief texture paths formats manual"));
    EXPECT_EQ(ZshOffers("krmodel texture "), Sorted("make show extract"));
    EXPECT_EQ(ZshOffers("krmodel info "), Sorted("FILES"));
    EXPECT_TRUE(ZshOffers("krmodel convert -").contains(QStringLiteral("--unit")));
}

TEST_F(KrmodelManual, FishCompletesCommandsAndTheirOptions)
{
    Made("fish");
    EXPECT_EQ(FishOffers("krmodel te"), Sorted("texture"));
    EXPECT_EQ(FishOffers("krmodel texture "), Sorted("make show extract"));
    EXPECT_EQ(FishOffers("krmodel convert --no"), Sorted("--normals --no-apply-transform --no-prefix"));
}

TEST_F(KrmodelManual, IsOfNoOtherKind)
{
    EXPECT_EQ(Run("manual ksh").exitCode, Usage);
    EXPECT_EQ(Run("manual").exitCode, Usage);
}

TEST_F(Krmodel, FormatsTellsWhatIsReadAndWritten)
{
    const ProgramRun run = Run("formats");
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.output.count(QLatin1Char('\n')), 5);
    for (const char* format :
         {"STL (.stl)", "OBJ (.obj)", "3MF (.3mf)", "STEP (.stp, .step)", "IGES (.igs, .iges)"})
        EXPECT_TRUE(run.output.contains(QLatin1String(format))) << format;
}

} // namespace
