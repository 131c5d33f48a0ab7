#include <map>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "tests/3mf/ModelSupport.h"
#include "tests/3mf/PlainModelReader.h"

namespace {

using test::OwnedModel;
using test::PlainModel;

// Translations do not depend on the order of factors; these do.
constexpr char kDouble[] = "2 0 0 0 2 0 0 0 2 0 0 0";
constexpr char kMove[] = "1 0 0 0 1 0 0 0 1 10 20 30";
constexpr char kTurn[] = "0 1 0 -1 0 0 0 0 1 0 0 0";

Matrix4<double> Matrix(const char* text)
{
    return Model3MF::ConvertFrom3MFMatStrToMat(QString::fromUtf8(text));
}

std::string Transform(const Mesh& mesh)
{
    return Model3MF::ConvertFromMatTo3MFMatStr(mesh.GetTransformMatrix()).toStdString();
}

std::string Object(int id, const std::string& content = "")
{
    return "<object id=\"" + std::to_string(id) + "\">" + content + "</object>";
}

std::string Placed(const char* element, int objectId, const char* transform)
{
    std::string text = std::string("<") + element + " objectid=\"" + std::to_string(objectId) + "\"";
    if (transform)
        text += std::string(" transform=\"") + transform + "\"";
    return text + "/>";
}

std::string Component(int objectId, const char* transform = nullptr)
{
    return Placed("component", objectId, transform);
}

std::string Components(int id, const std::string& components)
{
    return Object(id, "<components>" + components + "</components>");
}

std::string Item(int objectId, const char* transform = nullptr)
{
    return Placed("item", objectId, transform);
}

std::string Build(const std::string& items)
{
    return "<build>" + items + "</build>";
}

QByteArray Model(const std::string& content)
{
    return QByteArray::fromStdString("<model>" + content + "</model>");
}

void Load(Model3MF& model, const std::string& content)
{
    ASSERT_TRUE(model.LoadModel(Model(content))) << content;
}

std::vector<int> MembersOf(const Model3MF& model, int componentsId)
{
    return model.GetComponentMembers().value(componentsId);
}

using Ids = std::vector<int>;

} // namespace

TEST(Model3MFPlacement, GivesComponentsTheirTransformTimesTheItems)
{
    OwnedModel model;
    Load(model, Object(5) + Object(6) + Components(9, Component(5, kMove) + Component(6, kTurn)) +
                    Build(Item(9, kDouble)));
    ASSERT_EQ(model.GetObjects().size(), 2U);
    EXPECT_TRUE(test::HaveSameNumbers(model.Object(0).GetTransformMatrix(), Matrix(kMove) * Matrix(kDouble)));
    EXPECT_TRUE(test::HaveSameNumbers(model.Object(1).GetTransformMatrix(), Matrix(kTurn) * Matrix(kDouble)));
    EXPECT_EQ(Transform(model.Object(0)), "2 0 0 0 2 0 0 0 2 10 20 30");
    EXPECT_EQ(MembersOf(model, 9), (Ids{5, 6}));
    EXPECT_EQ(model.GetComponentMembers().size(), 1);
}

TEST(Model3MFPlacement, MultipliesItemsOnTheRight)
{
    OwnedModel model;
    Load(model, Object(1) + Build(Item(1, kMove) + Item(1, kTurn)));
    EXPECT_TRUE(test::HaveSameNumbers(model.Object(0).GetTransformMatrix(), Matrix(kMove) * Matrix(kTurn)));
    EXPECT_FALSE(test::HaveSameNumbers(model.Object(0).GetTransformMatrix(), Matrix(kTurn) * Matrix(kMove)));
}

TEST(Model3MFPlacement, MultipliesTwiceForItemsThatNameAMeshTwice)
{
    OwnedModel model;
    Load(model, Object(1) + Build(Item(1, kDouble) + Item(1, kDouble)));
    EXPECT_EQ(Transform(model.Object(0)), "4 0 0 0 4 0 0 0 4 0 0 0");
}

TEST(Model3MFPlacement, MultipliesOnceForAMeshWithTheSameIdTwice)
{
    OwnedModel model;
    Load(model, Object(1) + Components(1, Component(1)) + Build(Item(1, kDouble)));
    EXPECT_EQ(model.Object(0).GetComponentsId(), 1);
    EXPECT_EQ(Transform(model.Object(0)), "2 0 0 0 2 0 0 0 2 0 0 0");
}

TEST(Model3MFPlacement, LeavesMatricesToItemsWithoutTransform)
{
    OwnedModel model;
    Load(model,
         Object(1) + Object(2) + Components(3, Component(2, kMove)) + Build(Item(1) + Item(2) + Item(3)));
    EXPECT_EQ(Transform(model.Object(0)), "1 0 0 0 1 0 0 0 1 0 0 0");
    EXPECT_EQ(Transform(model.Object(1)), kMove);
}

TEST(Model3MFPlacement, MultipliesAnEmptyTransformAsTheIdentity)
{
    OwnedModel model;
    Load(model, Object(1) + Components(2, Component(1, kMove)) + Build(Item(2, "")));
    EXPECT_EQ(Transform(model.Object(0)), kMove);
}

TEST(Model3MFPlacement, KeepsMeshesThatNoItemNames)
{
    OwnedModel model;
    Load(model, Object(1) + Object(2) + Build(Item(1, kMove) + Item(7, kDouble)));
    ASSERT_EQ(model.GetObjects().size(), 2U);
    EXPECT_EQ(Transform(model.Object(1)), "1 0 0 0 1 0 0 0 1 0 0 0");
}

TEST(Model3MFPlacement, GivesComponentsNoMeshOfTheirOwn)
{
    OwnedModel model;
    Load(model, Object(1) + Components(2, Component(1)));
    ASSERT_EQ(model.GetObjects().size(), 1U);
    EXPECT_EQ(model.Object(0).GetObjectID(), 1);
    EXPECT_EQ(model.Object(0).GetComponentsId(), 2);
}

TEST(Model3MFPlacement, LeavesTheMatrixToAComponentWithoutTransform)
{
    OwnedModel model;
    Load(model, Object(1) + Components(2, Component(1, kMove)) + Components(3, Component(1)));
    EXPECT_EQ(model.Object(0).GetComponentsId(), 3);
    EXPECT_EQ(Transform(model.Object(0)), kMove);
}

TEST(Model3MFPlacement, SetsTheIdentityForAnEmptyTransformOfAComponent)
{
    OwnedModel model;
    Load(model, Object(1) + Components(2, Component(1, kMove)) + Components(3, Component(1, "")));
    EXPECT_EQ(Transform(model.Object(0)), "1 0 0 0 1 0 0 0 1 0 0 0");
}

TEST(Model3MFPlacement, LetsLaterComponentsWin)
{
    OwnedModel model;
    Load(model, Object(1) + Components(2, Component(1, kMove)) + Components(3, Component(1, kTurn)) +
                    Build(Item(2, kDouble)));
    EXPECT_EQ(model.Object(0).GetComponentsId(), 3);
    EXPECT_EQ(Transform(model.Object(0)), kTurn);
    EXPECT_TRUE(MembersOf(model, 2).empty());
    EXPECT_EQ(MembersOf(model, 3), Ids{1});
}

TEST(Model3MFPlacement, SetsAMatrixThatABuildHasMultiplied)
{
    OwnedModel model;
    Load(model,
         Object(1) + Build(Item(1, kDouble)) + Components(2, Component(1, kMove)) + Build(Item(1, kTurn)));
    EXPECT_TRUE(test::HaveSameNumbers(model.Object(0).GetTransformMatrix(), Matrix(kMove) * Matrix(kTurn)));
}

TEST(Model3MFPlacement, FindsNoMeshForComponentsOfComponents)
{
    OwnedModel model;
    Load(model, Object(1) + Components(2, Component(1, kMove)) + Components(3, Component(2, kTurn)) +
                    Build(Item(3, kDouble)));
    EXPECT_EQ(model.Object(0).GetComponentsId(), 2);
    EXPECT_EQ(Transform(model.Object(0)), kMove);
    EXPECT_TRUE(MembersOf(model, 3).empty());
}

TEST(Model3MFPlacement, FindsNoMeshThatComesLater)
{
    OwnedModel model;
    Load(model, Components(2, Component(1, kMove)) + Build(Item(1, kMove)) + Object(1));
    EXPECT_EQ(model.Object(0).GetComponentsId(), -1);
    EXPECT_EQ(Transform(model.Object(0)), "1 0 0 0 1 0 0 0 1 0 0 0");
}

TEST(Model3MFPlacement, PlacesAllMeshesOfAnId)
{
    OwnedModel model;
    Load(model, Object(1) + Object(2) + Object(1) + Components(3, Component(1, kMove)) + Object(1) +
                    Build(Item(1, kDouble)));
    ASSERT_EQ(model.GetObjects().size(), 4U);
    EXPECT_EQ(Transform(model.Object(0)), "2 0 0 0 2 0 0 0 2 10 20 30");
    EXPECT_EQ(Transform(model.Object(1)), "1 0 0 0 1 0 0 0 1 0 0 0");
    EXPECT_EQ(Transform(model.Object(2)), "2 0 0 0 2 0 0 0 2 10 20 30");
    EXPECT_EQ(Transform(model.Object(3)), "2 0 0 0 2 0 0 0 2 0 0 0");
    EXPECT_EQ(model.Object(3).GetComponentsId(), -1);
}

TEST(Model3MFPlacement, ReachesComponentsByTheirOwnIdToo)
{
    OwnedModel model;
    Load(model, Object(1) + Components(2, Component(1)) + Build(Item(1, kDouble) + Item(2, kMove)));
    EXPECT_TRUE(test::HaveSameNumbers(model.Object(0).GetTransformMatrix(), Matrix(kDouble) * Matrix(kMove)));
}

TEST(Model3MFPlacement, TakesAnItemForMinusOneForAllMeshesWithoutComponents)
{
    OwnedModel model;
    Load(model, Object(1) + Object(2) + Components(3, Component(2)) + Build(Item(-1, kMove)));
    EXPECT_EQ(Transform(model.Object(0)), kMove);
    EXPECT_EQ(Transform(model.Object(1)), "1 0 0 0 1 0 0 0 1 0 0 0");
}

TEST(Model3MFPlacement, ReadsMissingIdsAsZero)
{
    OwnedModel model;
    Load(model, "<object/><object><components><component/></components></object>"
                "<build><item transform=\"3\"/></build>");
    EXPECT_EQ(model.Object(0).GetObjectID(), 0);
    EXPECT_EQ(model.Object(0).GetComponentsId(), 0);
    EXPECT_EQ(Transform(model.Object(0)), "3 0 0 0 1 0 0 0 1 0 0 0");
}

TEST(Model3MFPlacement, EntersMeshesWithoutComponentsUnderMinusOne)
{
    OwnedModel model;
    Load(model, Object(4) + Object(7) + Object(5) + Components(9, Component(7)));
    EXPECT_EQ(MembersOf(model, -1), (Ids{4, 5}));
    EXPECT_EQ(MembersOf(model, 9), Ids{7});
}

TEST(Model3MFPlacement, EntersAllMeshesAgainWithEachPart)
{
    OwnedModel model;
    Load(model, Object(4));
    Load(model, Object(5));
    EXPECT_EQ(MembersOf(model, -1), (Ids{4, 4, 5}));
    model.ReadComponentsformId();
    EXPECT_EQ(MembersOf(model, -1), (Ids{4, 4, 5, 4, 5}));
}

TEST(Model3MFPlacement, EntersNoMeshesOfAPartThatFailed)
{
    OwnedModel model;
    EXPECT_FALSE(model.LoadModel("<model><object id=\"1\"></object>"));
    EXPECT_TRUE(model.GetComponentMembers().isEmpty());
    Load(model, Object(2));
    EXPECT_EQ(MembersOf(model, -1), (Ids{1, 2}));
}

TEST(Model3MFPlacement, PlacesMeshesOfEarlierParts)
{
    OwnedModel model;
    Load(model, Object(1) + Build(Item(1, kDouble)));
    Load(model, Object(1) + Components(2, Component(8)) + Build(Item(1, kMove)));
    EXPECT_TRUE(test::HaveSameNumbers(model.Object(0).GetTransformMatrix(), Matrix(kDouble) * Matrix(kMove)));
    EXPECT_EQ(Transform(model.Object(1)), kMove);
}

TEST(Model3MFPlacement, PlacesWhatCameBeforeAnError)
{
    OwnedModel model;
    EXPECT_FALSE(model.LoadModel(QByteArray::fromStdString(
        "<model>" + Object(1) + Components(2, Component(1)) + "<build>" + Item(2, kMove) + "<item")));
    EXPECT_EQ(model.Object(0).GetComponentsId(), 2);
    EXPECT_EQ(Transform(model.Object(0)), kMove);
}

TEST(Model3MFPlacement, MultipliesAMeshThatTheHostListsTwiceTwice)
{
    Mesh one(0.03f), other(0.03f);
    one.SetObjectID(1);
    other.SetObjectID(1);
    Model3MF model;
    model.SetObjects({&one, &other, &one});
    Load(model, Build(Item(1, kDouble)));
    EXPECT_EQ(Transform(one), "4 0 0 0 4 0 0 0 4 0 0 0");
    EXPECT_EQ(Transform(other), "2 0 0 0 2 0 0 0 2 0 0 0");
    Load(model, Components(2, Component(1, kMove)) + Build(Item(1, kDouble)));
    EXPECT_EQ(Transform(one), "4 0 0 0 4 0 0 0 4 10 20 30");
    EXPECT_EQ(Transform(other), "2 0 0 0 2 0 0 0 2 10 20 30");
    EXPECT_EQ(MembersOf(model, 2), (Ids{1, 1, 1}));
}

TEST(Model3MFPlacement, DistinguishesNegativeZerosOfMatrices)
{
    OwnedModel model;
    PlainModel plain;
    const QByteArray document =
        Model(Object(1) + Components(2, Component(1, "1 0 0 0 1 0 0 0 1 -0 0 0")) + Object(1) +
              Components(2, Component(1)) + Build(Item(2, "inf")) + Object(1) + Build(Item(1, "-1")));
    ASSERT_TRUE(model.LoadModel(document));
    ASSERT_TRUE(plain.LoadModel(document));
    EXPECT_EQ(Difference(plain, model), "");
}

TEST(Model3MFPlacement, PlacesRandomlyAsThePlainSearchDoes)
{
    std::mt19937 random(5);
    const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    const char* const transforms[] = {nullptr, kDouble, kMove, kTurn, "", "-1 0 0 0 1 0 0 0 1 1e300", "0"};
    for (int round = 0; round < 2000; ++round) {
        std::string content;
        for (int statement = below(40); statement > 0; --statement) {
            const char* const transform = transforms[below(7)];
            switch (below(3)) {
            case 0:
                content += Object(below(5));
                break;
            case 1:
                content += Components(below(5), Component(below(5), transform) + Component(below(5)));
                break;
            default:
                content += Build(Item(below(6) - 1, transform) + Item(below(5), kTurn));
                break;
            }
        }
        OwnedModel model;
        PlainModel plain;
        for (int part = 0; part < 2; ++part) {
            ASSERT_TRUE(model.LoadModel(Model(content)));
            ASSERT_TRUE(plain.LoadModel(Model(content)));
            ASSERT_EQ(Difference(plain, model), "") << content;
        }
    }
}

namespace {

constexpr int kMany = 100'000;

// 100,000 objects with ids that partly meet, and components for them in another order, some twice.
std::vector<int> ManyIds()
{
    std::vector<int> ids;
    for (int i = 0; i < kMany; ++i)
        ids.push_back(i % 10 == 0 ? i / 2 : i);
    return ids;
}

std::vector<int> ManyNamed()
{
    std::vector<int> ids;
    for (int i = 0; i < kMany; ++i)
        ids.push_back(static_cast<int>(static_cast<long long>(i) * 7919 % (kMany / 2)));
    return ids;
}

std::string TranslationOf(int i)
{
    return "1 0 0 0 1 0 0 0 1 " + std::to_string(i) + " 0 0";
}

} // namespace

// A search from end to end for each component would look at 10,000,000,000 meshes.
TEST(Model3MFPlacement, PutsAHundredThousandObjectsIntoAHundredThousandComponents)
{
    std::string content;
    for (const int id : ManyIds())
        content += Object(id);
    std::string components;
    const std::vector<int> named = ManyNamed();
    for (int i = 0; i < kMany; ++i)
        components += Component(named[static_cast<std::size_t>(i)], TranslationOf(i).c_str());
    OwnedModel model;
    Load(model, content + Components(kMany, components) + Build(Item(kMany, "1 0 0 0 1 0 0 0 1 0 5 0")));

    std::map<int, int> lastComponentOf;
    for (int i = 0; i < kMany; ++i)
        lastComponentOf[named[static_cast<std::size_t>(i)]] = i;
    const std::vector<int> ids = ManyIds();
    std::vector<int> members;
    const std::vector<Mesh*> meshes = model.GetObjects();
    ASSERT_EQ(meshes.size(), ids.size());
    for (std::size_t i = 0; i < ids.size(); ++i) {
        const Mesh& mesh = *meshes[i];
        ASSERT_EQ(mesh.GetObjectID(), ids[i]);
        const auto last = lastComponentOf.find(ids[i]);
        const bool isPlaced = last != lastComponentOf.end();
        ASSERT_EQ(mesh.GetComponentsId(), isPlaced ? kMany : -1);
        ASSERT_EQ(mesh.GetTransformMatrix().get(0, 3), isPlaced ? last->second : 0);
        ASSERT_EQ(mesh.GetTransformMatrix().get(1, 3), isPlaced ? 5 : 0);
        if (isPlaced)
            members.push_back(ids[i]);
    }
    EXPECT_EQ(MembersOf(model, kMany), members);
    EXPECT_GT(members.size(), 50'000U);
    EXPECT_LT(members.size(), ids.size());
}

// All name all: 1,600,000,000 placements if each were made by itself.
TEST(Model3MFPlacement, PlacesManyMeshesOfOneIdManyTimes)
{
    std::string content, items, components;
    for (int i = 0; i < 40'000; ++i) {
        content += "<object/>";
        components += "<component transform=\"\"/>";
        items += i % 2 == 0 ? "<item transform=\"2\"/>" : "<item transform=\"0.5\"/>";
    }
    OwnedModel model;
    Load(model, content + Components(3, components) + Build(items) + content + Build(Item(0, kMove)));
    const std::vector<Mesh*> meshes = model.GetObjects();
    ASSERT_EQ(meshes.size(), 80'000U);
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        ASSERT_EQ(meshes[i]->GetComponentsId(), i < 40'000 ? 3 : -1);
        ASSERT_TRUE(test::HaveSameNumbers(meshes[i]->GetTransformMatrix(), Matrix(kMove)));
    }
}
