#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>

#include "tests/common/RunProgram.h"

// What the pages say is compared with what is there: the programs, what krmodel prints, pictures, links and
// tests.

namespace {

QString Source(const QString& name)
{
    return QStringLiteral(KRCORE_SOURCES "/") + name;
}

QString Text(const QString& fileName)
{
    QFile file(fileName);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << fileName.toStdString();
    return QString::fromUtf8(file.readAll());
}

/// The pages by their paths from the top.
QStringList Pages()
{
    QStringList pages = {QStringLiteral("README.md"), QStringLiteral("CHANGELOG.md"),
                         QStringLiteral("CONTRIBUTING.md"), QStringLiteral("samples/README.md")};
    for (const QString& name : QDir(Source(QStringLiteral("docs"))).entryList({QStringLiteral("*.md")}))
        pages << QStringLiteral("docs/") + name;
    return pages;
}

/// What stands in fences that begin with ``` and @p kind.
QStringList Blocks(const QString& page, const QString& kind)
{
    const QRegularExpression fences(QStringLiteral("^```(\\w*)\\n(.*?)^```$"),
                                    QRegularExpression::MultilineOption |
                                        QRegularExpression::DotMatchesEverythingOption);
    QStringList blocks;
    for (auto all = fences.globalMatch(page); all.hasNext();) {
        const QRegularExpressionMatch fence = all.next();
        if (fence.captured(1) == kind)
            blocks << fence.captured(2);
    }
    return blocks;
}

QString WithoutBlocks(QString page)
{
    return page.remove(QRegularExpression(QStringLiteral("^```.*?^```$"),
                                          QRegularExpression::MultilineOption |
                                              QRegularExpression::DotMatchesEverythingOption));
}

/// All that @p pattern captures in any page, code in blocks apart.
QStringList Mentions(const QString& pattern)
{
    QStringList mentions;
    for (const QString& page : Pages())
        for (auto all = QRegularExpression(pattern).globalMatch(WithoutBlocks(Text(Source(page))));
             all.hasNext();)
            mentions << all.next().captured(1);
    return mentions;
}

TEST(Documents, QuoteProgramsAsTheyAre)
{
    QStringList programs, quoted;
    QDir examples(Source(QStringLiteral("examples")));
    for (const QString& name : examples.entryList({QStringLiteral("*.cpp")})) {
        const QString program = Text(examples.filePath(name));
        programs << program.mid(program.indexOf(QStringLiteral("#include")));
    }
    for (const QString& page : Pages())
        quoted << Blocks(Text(Source(page)), QStringLiteral("cpp")).filter(QStringLiteral("int main("));
    for (const QString& quote : quoted)
        EXPECT_TRUE(programs.contains(quote)) << quote.toStdString();
    for (const QString& program : programs)
        EXPECT_TRUE(quoted.contains(program)) << program.toStdString();
}

/// What is printed but for times and memory, which differ from run to run.
QString Lasting(QString text)
{
    return text.remove(QRegularExpression(QStringLiteral("  (read in|peak memory) .*\n")));
}

/// Runs krmodel or an example as a page says: "name argument...", in the top directory.
QString Printed(const QString& command)
{
    const QStringList words = command.split(QLatin1Char(' '));
    const QString program = words.first() == QStringLiteral("krmodel")
                                ? QStringLiteral(KRMODEL_PROGRAM)
                                : QStringLiteral(KRCORE_EXAMPLE_PROGRAMS "/") + words.first();
    return Lasting(RunProgram(program, words.mid(1), QStringLiteral(KRCORE_SOURCES)).output);
}

TEST(Documents, ShowWhatProgramsPrintOfTheSamples)
{
    int count = 0;
    for (const QString& page : Pages())
        for (const QString& block : Blocks(Text(Source(page)), QString())) {
            const int end = block.indexOf(QLatin1Char('\n'));
            const QString command = block.left(end);
            // What needs a shell and programs of others is not run.
            if (!command.startsWith(QStringLiteral("$ ")) || command.contains(QLatin1Char('|')))
                continue;
            EXPECT_EQ(Lasting(block.mid(end + 1)), Printed(command.mid(2))) << page.toStdString();
            ++count;
        }
    EXPECT_GE(count, 10);
}

/// The name that a heading is reached by.
QString AnchorOf(QString heading)
{
    heading = heading.toLower().remove(QRegularExpression(QStringLiteral("[^\\w\\- ]")));
    return heading.replace(QLatin1Char(' '), QLatin1Char('-'));
}

QStringList AnchorsOf(const QString& page)
{
    QStringList anchors;
    const QRegularExpression headings(QStringLiteral("^#+ (.*)$"), QRegularExpression::MultilineOption);
    for (auto all = headings.globalMatch(WithoutBlocks(Text(page))); all.hasNext();)
        anchors << AnchorOf(all.next().captured(1));
    return anchors;
}

TEST(Documents, LinksLeadToFilesAndHeadings)
{
    const QRegularExpression links(QStringLiteral("\\]\\(([^)#\\s]*)(?:#([^)\\s]*))?\\)"));
    int count = 0;
    for (const QString& page : Pages()) {
        const QDir directory = QFileInfo(Source(page)).dir();
        for (auto all = links.globalMatch(WithoutBlocks(Text(Source(page)))); all.hasNext();) {
            const QRegularExpressionMatch link = all.next();
            if (link.captured(1).contains(QStringLiteral("://")))
                continue;
            const QString target =
                link.captured(1).isEmpty() ? Source(page) : directory.filePath(link.captured(1));
            EXPECT_TRUE(QFile::exists(target)) << page.toStdString() << ": " << target.toStdString();
            const bool isThere = link.captured(2).isEmpty() || AnchorsOf(target).contains(link.captured(2));
            EXPECT_TRUE(isThere) << page.toStdString() << ": " << link.captured(0).toStdString();
            ++count;
        }
    }
    EXPECT_GE(count, 50);
}

QSet<QString> TestNames()
{
    QSet<QString> names;
    const QRegularExpression tests(QStringLiteral("^TEST(?:_[FP])?\\((\\w+),\\s*(\\w+)\\)"),
                                   QRegularExpression::MultilineOption);
    for (QDirIterator files(Source(QStringLiteral("tests")), {QStringLiteral("*.cpp")}, QDir::Files,
                            QDirIterator::Subdirectories);
         files.hasNext();)
        for (auto all = tests.globalMatch(Text(files.next())); all.hasNext();) {
            const QRegularExpressionMatch test = all.next();
            names << test.captured(1) + QLatin1Char('.') + test.captured(2);
        }
    return names;
}

TEST(Documents, NameTestsThatAreThere)
{
    const QSet<QString> names = TestNames();
    const QStringList mentions = Mentions(QStringLiteral("`([A-Z0-9]\\w+\\.[A-Z]\\w{3,})`"));
    for (const QString& name : mentions)
        EXPECT_TRUE(names.contains(name)) << name.toStdString();
    EXPECT_GE(mentions.size(), 100);
}

/// How much of the pixels looks different.
double Difference(const QImage& a, const QImage& b)
{
    EXPECT_EQ(a.size(), b.size());
    int count = 0;
    for (int y = 0; y < std::min(a.height(), b.height()); ++y)
        for (int x = 0; x < std::min(a.width(), b.width()); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            count += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) +
                         std::abs(qBlue(p) - qBlue(q)) >
                     12;
        }
    return double(count) / (a.width() * a.height());
}

TEST(Documents, ShowPicturesAsTheyAreMade)
{
    const QTemporaryDir made;
    const ProgramRun run = RunProgram(QStringLiteral("bash"), {Source(QStringLiteral("docs/make-pictures")),
                                                               QStringLiteral(KRCORE_BUILD), made.path()});
    ASSERT_EQ(run.exitCode, 0) << run.errors.toStdString();
    const QDir kept(Source(QStringLiteral("docs/images")));
    const QStringList names = kept.entryList({QStringLiteral("*.png")}, QDir::Files, QDir::Name);
    EXPECT_EQ(names, QDir(made.path()).entryList({QStringLiteral("*.png")}, QDir::Files, QDir::Name));
    // A compiler may round the light on a pixel in another way.
    for (const QString& name : names)
        EXPECT_LT(Difference(QImage(kept.filePath(name)), QImage(made.filePath(name))), 0.01)
            << name.toStdString();
    const QStringList shown = Mentions(QStringLiteral("!\\[[^\\]]*\\]\\((?:docs/)?images/([^)]*\\.png)\\)"));
    for (const QString& name : names)
        EXPECT_TRUE(shown.contains(name)) << name.toStdString();
}

TEST(Documents, OfTheManualAreAllThereAre)
{
    const QString input = Text(QStringLiteral(KRCORE_BUILD "/docs/Doxyfile"));
    for (const QString& page : Pages())
        EXPECT_TRUE(input.contains(QLatin1Char('"') + Source(page) + QLatin1Char('"'))) << page.toStdString();
}

/// The names of what a declaration takes.
QStringList ParametersOf(const QString& declaration)
{
    const int begin = declaration.indexOf(QLatin1Char('(')) + 1;
    QString list = declaration.mid(begin, declaration.lastIndexOf(QLatin1Char(')')) - begin);
    const QRegularExpression innermost(QStringLiteral("<[^<>]*>"));
    while (list.contains(innermost))
        list.remove(innermost);
    QStringList names;
    const QRegularExpression name(QStringLiteral("(\\w+)\\s*$"));
    for (const QString& parameter : list.split(QLatin1Char(',')))
        names << name.match(parameter).captured(1);
    return names;
}

TEST(PublicHeaders, SpeakOfEachParameterWhereTheyListSome)
{
    const QRegularExpression header(QStringLiteral("\"([^\"]+\\.h)\""));
    const QRegularExpression documented(QStringLiteral("((?:^ *///.*\\n)+)((?:(?! *///).+\\n)*?[^;{]*?[;{])"),
                                        QRegularExpression::MultilineOption);
    int count = 0;
    for (auto headers = header.globalMatch(Text(QStringLiteral(KRCORE_BUILD "/docs/Doxyfile")));
         headers.hasNext();)
        for (auto all = documented.globalMatch(Text(headers.next().captured(1))); all.hasNext();) {
            const QRegularExpressionMatch operation = all.next();
            const QString comment = operation.captured(1);
            if (!comment.contains(QStringLiteral("@param")) ||
                !operation.captured(2).contains(QLatin1Char('(')))
                continue;
            for (const QString& name : ParametersOf(operation.captured(2))) {
                const bool isThere =
                    comment.contains(QRegularExpression(QStringLiteral("\\b%1\\b").arg(name)));
                EXPECT_TRUE(isThere) << name.toStdString() << "\n" << operation.captured(0).toStdString();
                ++count;
            }
        }
    EXPECT_GE(count, 80);
}

} // namespace
