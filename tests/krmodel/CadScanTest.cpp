#include <gtest/gtest.h>

#include "apps/krmodel/CadFormat.h"
#include "tests/common/Directory.h"

namespace {

using krmodel::Loss;
using krmodel::Model;

std::string TextOf(const std::vector<Loss>& losses)
{
    QString text;
    for (const Loss& loss : losses)
        text += loss.kind + QStringLiteral(": ") + loss.text + QLatin1Char('\n');
    return text.toStdString();
}

/// A line of the directory of an IGES file.
QByteArray DirectoryLine(const QList<int>& fields, int number)
{
    QByteArray line;
    for (const int field : fields)
        line += QByteArray::number(field).rightJustified(8);
    return line.leftJustified(72) + 'D' + QByteArray::number(number).rightJustified(7) + '\n';
}

TEST(CadScan, CountsStylesLayersAndNamedSolidsOfStep)
{
    const test::Directory directory;
    const QString fileName =
        directory.Write("ISO-10303-21;\nDATA;\n#1=MANIFOLD_SOLID_BREP('Body',#2);\n"
                        "#3 = MANIFOLD_SOLID_BREP ( '' , #2 ) ;\n"
                        "#4=BREP_WITH_VOIDS('Hollow',#2,(#2));\n"
                        "#5=STYLED_ITEM('',(#6),#1);#7=OVER_RIDING_STYLED_ITEM('',(#6),#1,#5);\n"
                        "#8=PRESENTATION_LAYER_ASSIGNMENT('1','',(#1));\nENDSEC;\n");
    EXPECT_EQ(TextOf(krmodel::cad::ScanStep(fileName, Model())),
              "colours: the colours and styles of 2 items\nlayers: 1 layer\n"
              "solid-names: the names of 2 solids: objects are named by the assembly\n");
}

TEST(CadScan, FindsNothingInAStepFileWithoutStyles)
{
    const test::Directory directory;
    const QString fileName =
        directory.Write("ISO-10303-21;\nDATA;\n#1=CLOSED_SHELL('STYLED_ITEM(',(#2));\nENDSEC;\n");
    EXPECT_EQ(TextOf(krmodel::cad::ScanStep(fileName, Model())), "");
    EXPECT_EQ(TextOf(krmodel::cad::ScanStep(directory.Path(QStringLiteral("missing")), Model())), "");
}

TEST(CadScan, CountsColoursAndLevelsOfIges)
{
    const test::Directory directory;
    const QString fileName =
        directory.Write(QByteArray(72, ' ') + "S      1\n" + DirectoryLine({186, 1, 0, 0, 3}, 1) +
                        DirectoryLine({186, 0, -5}, 2) + DirectoryLine({514, 2, 0, 0, 0}, 3) +
                        DirectoryLine({514, 0, 2}, 4) + DirectoryLine({110, 3, 0, 0, 0}, 5) +
                        DirectoryLine({110, 0, 0}, 6) + QByteArray(72, '9') + "P      1\n");
    EXPECT_EQ(TextOf(krmodel::cad::ScanIges(fileName, Model())),
              "colours: the colours of 2 entities\nlayers: the level that 1 entity is on\n");
}

} // namespace
