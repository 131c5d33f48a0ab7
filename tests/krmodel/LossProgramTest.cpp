#include "tests/krmodel/PackageBuilder.h"
#include "tests/krmodel/ProgramSupport.h"

namespace {

using test::ItemText;
using test::kTetrahedron;
using test::ModelText;
using test::ObjectText;
using test::Package;

class KrmodelLoss : public Krmodel {
protected:
    /// What is not carried when @p input becomes @p output.
    QStringList LossesTo(const char* input, const char* output) const
    {
        const ProgramRun run = Run({QStringLiteral("convert"), QLatin1String(input), QLatin1String(output)});
        EXPECT_EQ(run.exitCode, Done) << run.errors.toStdString();
        EXPECT_EQ(run.output, QString());
        const QString beginning = QStringLiteral("krmodel: %1: not carried: ").arg(QLatin1String(input));
        QStringList losses;
        for (const QString& line : run.errors.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            EXPECT_TRUE(line.startsWith(beginning)) << line.toStdString();
            losses << line.mid(beginning.size());
        }
        return losses;
    }
};

/// One facet in a text of STL.
QByteArray FacetText(const QByteArray& corner)
{
    return "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex " + corner +
           "\nendloop\nendfacet\n";
}

TEST_F(KrmodelLoss, NamesWhatAPackageDeclaresAndTheLibraryDoesNotHold)
{
    QByteArray coloured = kTetrahedron;
    coloured.replace("v3='1'/>", "v3='1' pid='9' p1='0'/>")
        .replace("v2='1' v3='3'/>", "v2='1' v3='3' p1='1'/>");
    const QByteArray groups =
        "<basematerials id='9'><base displaycolor='#112233'/></basematerials>"
        "<m:colorgroup xmlns:m='m' id='10'><m:color color='#112233'/></m:colorgroup>"
        "<!-- <object id='77' pid='1'> --><m:texture2d xmlns:m='m' id='11' path='/a.png'/>"
        "<m:texture2dgroup xmlns:m='m' id='12' texid='11'><m:tex2coord u='0' v='0'/>"
        "<m:tex2coord u='1' v='0'/></m:texture2dgroup>";
    const QByteArray objects =
        "<object id='1' pid='9' type='support'>" + coloured + "</object>" +
        "<object id='2'><components><component objectid='1'/></components></object>"
        "<object id='3'><components><component objectid='2'/><component objectid='2'/></components></object>";
    const QByteArray items = ItemText(3, "1 0 0 0 1 0 0 0 1 0 0 0") + ItemText(3, "1 0 0 0 1 0 0 0 1 9 0 0");
    Write("in.3mf", Package(ModelText("millimeter", groups + objects, items))
                        .Add("3D/other.model", ModelText("millimeter", ObjectText(1, "")))
                        .Bytes());
    EXPECT_EQ(LossesTo("in.3mf", "out.3mf").join(QLatin1Char('\n')),
              QStringLiteral("2 components that are made of components\n"
                             "1 further placement of objects that are placed more than once\n"
                             "that 1 model part stands beside the package's root model: all are taken for "
                             "one\n"
                             "the colours or textures of 2 triangles\n"
                             "the colour of 1 object\n"
                             "1 group of colours or materials beside the first\n"
                             "2 texture coordinates\n"
                             "1 texture\n"
                             "that 1 object is no model but support or the like"));
}

TEST_F(KrmodelLoss, LooksBehindALongCommentOfAPackage)
{
    const QByteArray comment =
        "<!--" + QByteArray(9000, ' ') + "<object id='7' pid='1'>" + QByteArray(9000, ' ') + "-->";
    Write("in.3mf",
          Package(ModelText("millimeter", comment + "<object id='1' pid='9'>" + kTetrahedron + "</object>"))
              .Bytes());
    EXPECT_EQ(LossesTo("in.3mf", "out.3mf"), QStringList{QStringLiteral("the colour of 1 object")});
}

TEST_F(KrmodelLoss, NamesWhatAnObjFileDeclaresAndTheLibraryDoesNotHold)
{
    Write("in.obj",
          "o a\nv 0 0 0 1 0 0\nv 1 0 0\nv 0 1 0\nvn 0 0 1\nf 1 2 3\no b\nf -1 -2 -3\nf 1/-1 2/-2 3/-3\n"
          "l 1 2\np 1\ncurv 0 1 1 2\nsurf 0 1 0 1 1 2 3");
    EXPECT_EQ(LossesTo("in.obj", "out.stl").join(QLatin1Char('\n')),
              QStringLiteral("2 faces with relative (negative) indices, which are left out\n"
                             "2 free-form curves and surfaces\n"
                             "1 line element\n"
                             "1 point element\n"
                             "the colour of 1 vertex\n"
                             "1 normal, which is worked out anew\n"
                             "the division into 2 groups and objects\n"
                             "the texture coordinates of 1 facet"));
}

TEST_F(KrmodelLoss, NamesWhatAnStlFileDeclaresAndTheLibraryDoesNotHold)
{
    EXPECT_EQ(Run(Words("convert %1 in.stl", Sample("cube-inward.stl"))).exitCode, Done);
    QByteArray bytes = Bytes("in.stl");
    bytes.replace(0, 6, "COLOR=");
    bytes[84 + 48] = 1;
    bytes[84 + 50 + 49] = 2;
    // The third facet's second corner becomes its first.
    bytes.replace(84 + 2 * 50 + 24, 12, bytes.mid(84 + 2 * 50 + 12, 12));
    Write("in.stl", bytes);
    EXPECT_EQ(LossesTo("in.stl", "out.stl").join(QLatin1Char('\n')),
              QStringLiteral("1 facet that is no triangle\n"
                             "the attribute words (colours) of 2 facets\n"
                             "the colour in the header"));
    Write("text.stl", "solid a\n" + FacetText("0 1 0") + "endsolid a\nsolid b\n" + FacetText("0 -1 0") +
                          FacetText("1 0 0") + "endsolid b\n");
    EXPECT_EQ(LossesTo("text.stl", "out.stl").join(QLatin1Char('\n')),
              QStringLiteral("1 facet that is no triangle\nthe division into 2 solids"));
}

TEST_F(KrmodelLoss, NamesWhatTheOutputFormatCannotHold)
{
    CopySample("bolt.3mf", "bolt.3mf");
    EXPECT_EQ(LossesTo("bolt.3mf", "same.3mf"), QStringList());
    EXPECT_EQ(LossesTo("bolt.3mf", "out.stl").join(QLatin1Char('\n')),
              QStringLiteral("the names of 2 objects\nthe division into 2 objects\n2 metadata entries\n"
                             "2 colours\nthe thumbnail"));
    CopySample("balloon.obj", "balloon.obj");
    CopySample("balloon.mtl", "balloon.mtl");
    EXPECT_EQ(LossesTo("balloon.obj", "same.obj"),
              QStringList{QStringLiteral("the materials of 5 groups of facets")});
    EXPECT_EQ(LossesTo("balloon.obj", "out.3mf").join(QLatin1Char('\n')),
              QStringLiteral("the texture coordinates of 2,120 facets\nthe materials of 5 groups of facets"));
}

TEST_F(KrmodelLoss, NamesFacetsThatFallTogetherByRounding)
{
    Write("in.stl", "solid a\n" + FacetText("0 1 0") + FacetText("0 1e-9 0") + "endsolid a\n");
    EXPECT_EQ(
        LossesTo("in.stl", "out.obj"),
        QStringList{QStringLiteral("1 facet, whose corners fall together when rounded to six decimals")});
    Write("far.stl", "solid a\n" + FacetText("0 1 0") +
                         "facet normal 0 0 1\nouter loop\nvertex 100000.1 0 0\n"
                         "vertex 100000.2 0 0\nvertex 0 7 0\nendloop\nendfacet\nendsolid a\n");
    EXPECT_EQ(LossesTo("far.stl", "out.3mf"),
              QStringList{QStringLiteral("1 facet, whose corners fall together when rounded to six digits")});
    EXPECT_EQ(LossesTo("far.stl", "out.obj"), QStringList());
}

TEST_F(KrmodelLoss, IsHiddenByQuiet)
{
    const ProgramRun run = Run(Words("convert --quiet %1 out.stl", Sample("bolt.3mf")));
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.errors, QString());
}

TEST_F(KrmodelLoss, IsShownByInfo)
{
    Write("in.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 0 0 1\nf 1 2 3\nl 1 2\n");
    const ProgramRun run = Run("info in.obj");
    EXPECT_EQ(run.errors, QString());
    EXPECT_TRUE(run.output.endsWith(
        QStringLiteral("\n  not carried\n  1 line element\n  1 normal, which is worked out anew\n")))
        << run.output.toStdString();
    EXPECT_FALSE(InfoOfSample("knob.stl").output.contains(QStringLiteral("not carried")));
}

} // namespace
