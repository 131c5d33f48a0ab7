#include "tests/krmodel/PackageBuilder.h"
#include "tests/krmodel/ProgramSupport.h"

namespace {

using test::ModelText;
using test::ObjectText;
using test::Package;

class KrmodelObjects : public Krmodel {
protected:
    void WritePackage(const QByteArray& resources, const QByteArray& others = {}) const
    {
        Write("in.3mf", Package(ModelText("millimeter", resources, {}, others)).Bytes());
    }
    static QByteArray Repeated(int count, const char* text)
    {
        QByteArray all;
        for (int i = 0; i < count; ++i)
            all += QByteArray(text).replace("%1", QByteArray::number(i + 100));
        return all;
    }
};

TEST_F(KrmodelObjects, WithoutFacetsAreNumberedAndNotWritten)
{
    const QByteArray empty = "<mesh><vertices><vertex x='0' y='0' z='0'/></vertices></mesh>";
    WritePackage(ObjectText(1, "a") + ObjectText(2, "b", empty) + ObjectText(3, "c"));
    const ProgramRun run = Run("convert --quiet --json --split in.3mf part.stl");
    EXPECT_EQ(run.exitCode, Done) << run.errors.toStdString();
    EXPECT_EQ(AllFiles(), Words("in.3mf part-1.stl part-3.stl"));
    EXPECT_TRUE(run.output.contains(QStringLiteral("part-3.stl")));
    EXPECT_FALSE(run.output.contains(QStringLiteral("part-2.stl")));
}

TEST_F(KrmodelObjects, ShowTheFirstEightOfTheirColours)
{
    WritePackage("<basematerials id='9'>" + Repeated(9, "<base name='a' displaycolor='#000%1'/>") +
                 "</basematerials>" + ObjectText(1, "a"));
    EXPECT_EQ(Cell(Run("info in.3mf"), "colours"),
              QStringLiteral("9: #000100 #000101 #000102 #000103 #000104 #000105 #000106 #000107 ..."));
}

TEST_F(KrmodelObjects, ShowTheFirstThirtyOfTheirMetadata)
{
    WritePackage(ObjectText(1, "a"), Repeated(31, "<metadata name='m%1'>text</metadata>"));
    const ProgramRun run = Run("info in.3mf");
    EXPECT_EQ(Cell(run, "m129"), QStringLiteral("text"));
    EXPECT_FALSE(run.output.contains(QStringLiteral("m130")));
    EXPECT_TRUE(run.output.contains(QStringLiteral("and 1 more"))) << run.output.toStdString();
}

TEST_F(KrmodelObjects, CannotBeReadTwiceFromStandardInput)
{
    ExpectUsageErrors({"convert - - - --from stl --to obj"});
}

TEST_F(KrmodelObjects, AreNotSeenFromAnglesThatAreNoNumbers)
{
    CopySample("bolt.3mf", "in.3mf");
    ExpectUsageErrors({"preview in.3mf out.png --view left,10", "preview in.3mf out.png --view 10,up",
                       "preview in.3mf out.png --view 10,91", "preview in.3mf out.png --view 361,10"});
}

} // namespace
