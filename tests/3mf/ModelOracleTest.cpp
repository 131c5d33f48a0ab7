#include <gtest/gtest.h>

#include "fileformat/3mf/SetAside_p.h"
#include "tests/3mf/ModelSupport.h"
#include "tests/3mf/PlainModelReader.h"
#include "tests/3mf/RandomModelPart.h"

namespace {

using kr::package3mf::SetAsideElements;
using test::PlainModel;
using test::RandomModelPart;

bool SetsAside(const QByteArray& document)
{
    return SetAsideElements(document).Remainder() != document;
}

class Model3MFOracle : public testing::TestWithParam<unsigned> {};

} // namespace

// Each of the 60 cases takes 1,000 documents, which must have gone all roads.
TEST_P(Model3MFOracle, HoldsWhatThePlainReaderHolds)
{
    RandomModelPart random(GetParam());
    int setAside = 0, loaded = 0, failed = 0, failedWithRows = 0;
    for (int i = 0; i < 1000; ++i) {
        const QByteArray document = random.Document();
        test::OwnedModel model;
        PlainModel plain;
        const bool isLoaded = model.LoadModel(document);
        ASSERT_EQ(isLoaded, plain.LoadModel(document)) << "document " << i << "\n" << document.toStdString();
        ASSERT_EQ(Difference(plain, model), "") << "document " << i << "\n" << document.toStdString();
        const bool hasRows = SetsAside(document);
        setAside += hasRows;
        failedWithRows += hasRows && !isLoaded;
        (isLoaded ? loaded : failed) += 1;
    }
    EXPECT_GT(setAside, 200);
    EXPECT_GT(loaded, 300);
    EXPECT_GT(failed, 100);
    EXPECT_GT(failedWithRows, 30);
}

// Meshes, colours and component members add up; the parts place each other's meshes.
TEST_P(Model3MFOracle, HoldsWhatThePlainReaderHoldsAfterSeveralParts)
{
    RandomModelPart random(GetParam() + 1000);
    for (int i = 0; i < 60; ++i) {
        test::OwnedModel model;
        PlainModel plain;
        for (int part = 0; part < 4; ++part) {
            const QByteArray document = random.Document();
            ASSERT_EQ(model.LoadModel(document), plain.LoadModel(document)) << document.toStdString();
            ASSERT_EQ(Difference(plain, model), "") << document.toStdString();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Model3MFOracle, testing::Range(1u, 61u));
