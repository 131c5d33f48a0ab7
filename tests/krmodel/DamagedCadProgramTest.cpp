#include "tests/cad/DamagedCad.h"
#include "tests/krmodel/ProgramSupport.h"

namespace {

class KrmodelDamagedCad : public Krmodel {};

// What OpenCASCADE throws is no standard exception.
TEST_F(KrmodelDamagedCad, ReportsAnIgesFileThatOpenCascadeThrowsAt)
{
    ASSERT_TRUE(test::WriteIGES(Path("sheet.iges"), {test::MakeSampleParts().sheet}));
    EXPECT_EQ(Run("info sheet.iges").exitCode, Done);
    Write("damaged.iges", test::WithAnUnfinishedLoop(Bytes("sheet.iges")));
    ExpectFailures(
        {{"damaged.iges", NotReadable, "not readable as IGES, no facets could be made of its surfaces"}},
        {"info %1", "check %1", "convert %1 out.stl", "preview %1 out.png"});
}

} // namespace
