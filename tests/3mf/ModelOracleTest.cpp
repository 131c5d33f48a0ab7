#include <random>
#include <string>

#include <gtest/gtest.h>

#include "fileformat/3mf/SetAside_p.h"
#include "tests/3mf/ModelSupport.h"
#include "tests/3mf/PlainModelReader.h"
#include "tests/3mf/RandomModelPart.h"

namespace {

using kr::package3mf::SetAsideElements;
using test::PlainModel;
using test::RandomModelPart;

// Digits before and behind a point, an exponent; one number in fifty may lack digits where it needs some.
std::string RandomNumber(std::mt19937& random)
{
    const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
    const unsigned fewest = below(50) == 0 ? 0 : 1;
    const auto digits = [&](unsigned atMost) {
        std::string text;
        for (unsigned left = fewest + below(atMost); left > 0; --left)
            text += static_cast<char>('0' + below(10));
        return text;
    };
    const char* const signs[] = {"", "-", "+"};
    std::string number = signs[below(3)] + digits(below(5) == 0 ? 30 : 9);
    if (below(4) != 0)
        number += "." + digits(below(5) == 0 ? 30 : 9);
    if (below(4) == 0)
        number += (below(2) == 0 ? "e" : "E") + std::string(signs[below(3)]) + digits(3);
    return number;
}

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

TEST(Model3MFOracleNumbers, ReadsCoordinatesOfAllSpellingsAsThePlainReaderDoes)
{
    std::mt19937 random(3);
    for (int i = 0; i < 100; ++i) {
        std::string rows;
        for (int vertex = 0; vertex < 1000; ++vertex)
            rows += "<vertex x=\"" + RandomNumber(random) + "\" y=\"" + RandomNumber(random) + "\" z=\"" +
                    RandomNumber(random) + "\"/>";
        const QByteArray document =
            QByteArray::fromStdString("<model><object><mesh>" + rows + "</mesh></object></model>");
        ASSERT_TRUE(SetsAside(document));
        test::OwnedModel model;
        PlainModel plain;
        ASSERT_TRUE(model.LoadModel(document));
        ASSERT_TRUE(plain.LoadModel(document));
        ASSERT_EQ(Difference(plain, model), "") << document.toStdString();
    }
}
