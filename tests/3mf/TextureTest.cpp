#include <initializer_list>
#include <utility>
#include <vector>

#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include "fileformat/3mf/Textures_p.h"

namespace {

using Coordinates = std::vector<std::pair<double, double>>;

// Parses the first group of a document; whether that was accepted.
bool Parse(Model3MF& model, const QByteArray& document)
{
    QXmlStreamReader reader(document);
    while (!reader.atEnd() && !(reader.isStartElement() && reader.name() == QLatin1String("texture2dgroup")))
        reader.readNext();
    return model.ParserTexture(reader);
}

Coordinates CoordinatesOf(const QByteArray& content)
{
    Model3MF model;
    EXPECT_TRUE(Parse(model, "<texture2dgroup id='1'>" + content + "</texture2dgroup>"));
    return model.GetTextureGroups().at(0).coords;
}

} // namespace

TEST(Model3MFTexture, KeepsCoordinatesInTheirOrder)
{
    EXPECT_EQ(
        CoordinatesOf("<tex2coord u='0.5' v='1'/><tex2coord u='-2.25' v='1e-3'/><tex2coord u='0.1' v='7'/>"),
        (Coordinates{{0.5, 1}, {-2.25, 0.001}, {0.1, 7}}));
}

// The host drives the reader, and stops it when it likes.
TEST(Model3MFTexture, GoesOnWhateverWorkTheDocumentMakes)
{
    constexpr int kDepth = 34'000;
    QByteArray nested;
    for (int i = 0; i < kDepth; ++i)
        nested += "<a xmlns:n" + QByteArray::number(i) + "='u'>";
    nested += QByteArray("</a>").repeated(kDepth);
    EXPECT_EQ(CoordinatesOf(nested + "<tex2coord u='1' v='2'/>"), (Coordinates{{1, 2}}));
}

TEST(Model3MFTexture, RepeatsTheLatestValueForAMissingOne)
{
    EXPECT_EQ(CoordinatesOf("<tex2coord u='1' v='2'/><tex2coord v='3'/><tex2coord u='4'/><tex2coord/>"),
              (Coordinates{{1, 2}, {1, 3}, {4, 3}, {4, 3}}));
}

TEST(Model3MFTexture, TakesZeroForAValueThatNeverCame)
{
    EXPECT_EQ(CoordinatesOf("<tex2coord/><tex2coord v='3'/>"), (Coordinates{{0, 0}, {0, 3}}));
}

TEST(Model3MFTexture, StartsEachGroupAnew)
{
    Model3MF model;
    ASSERT_TRUE(Parse(model, "<texture2dgroup id='1'><tex2coord u='5' v='6'/></texture2dgroup>"));
    ASSERT_TRUE(Parse(model, "<texture2dgroup id='2'><tex2coord/></texture2dgroup>"));
    EXPECT_EQ(model.GetTextureGroups().at(1).coords, (Coordinates{{0, 0}}));
}

// A value that cannot be read is there all the same.
TEST(Model3MFTexture, ReadsWhatIsNoNumberAsZero)
{
    EXPECT_EQ(CoordinatesOf("<tex2coord u='1' v='2'/><tex2coord u='x' v=''/>"),
              (Coordinates{{1, 2}, {0, 0}}));
}

TEST(Model3MFTexture, RefusesAGroupWithoutId)
{
    Model3MF model;
    EXPECT_FALSE(Parse(model, "<texture2dgroup texid='1'><tex2coord u='1' v='2'/></texture2dgroup>"));
    EXPECT_TRUE(model.GetTextureGroups().empty());
}

TEST(Model3MFTexture, LeavesTheReaderWhereItIsWhenItRefuses)
{
    Model3MF model;
    QXmlStreamReader reader(QByteArray("<texture2dgroup><tex2coord/></texture2dgroup>"));
    reader.readNextStartElement();
    EXPECT_FALSE(model.ParserTexture(reader));
    EXPECT_TRUE(reader.isStartElement());
    EXPECT_EQ(reader.name(), QLatin1String("texture2dgroup"));
}

TEST(Model3MFTexture, AcceptsAnEmptyIdAndOneThatIsNoNumber)
{
    for (const char* const id : {"", "x", "1.5"}) {
        Model3MF model;
        EXPECT_TRUE(Parse(model, QByteArray("<texture2dgroup id='") + id + "'/>")) << id;
        EXPECT_EQ(model.GetTextureGroups().at(0).id, 0) << id;
    }
}

TEST(Model3MFTexture, HasTheDefaultTextureWhereNoneMatches)
{
    Model3MF model;
    ASSERT_TRUE(Parse(model, "<texture2dgroup id='7' texid='3'/>"));
    const std::vector<Model3MF::TextureGroup> groups = model.GetTextureGroups();
    ASSERT_EQ(groups.size(), 1U);
    EXPECT_EQ(groups[0].id, 7);
    EXPECT_EQ(groups[0].texture.id, -1);
    EXPECT_EQ(groups[0].texture.tileStyleU, QStringLiteral("wrap"));
    EXPECT_EQ(groups[0].texture.tileStyleV, QStringLiteral("wrap"));
    EXPECT_TRUE(groups[0].texture.path.isNull());
    EXPECT_EQ(groups[0].texture.contentType, QStringLiteral("image/png"));
    EXPECT_TRUE(groups[0].coords.empty());
}

TEST(Model3MFTexture, IsTheFirstOfItsIdAsAWhole)
{
    const auto text = [](const char* characters) { return QString::fromLatin1(characters); };
    const std::vector<Model3MF::Texture> textures = {
        {7, text("mirror"), text("clamp"), text("/a.jpg"), text("image/jpeg")},
        {7, text("wrap"), text("wrap"), text("/b.png"), text("image/png")},
        {0, text("none"), text("wrap"), text("/c.png"), text("image/png")}};
    const Model3MF::Texture seven = kr::package3mf::FindTexture(textures, 7);
    EXPECT_EQ(seven.id, 7);
    EXPECT_EQ(seven.tileStyleU, text("mirror"));
    EXPECT_EQ(seven.tileStyleV, text("clamp"));
    EXPECT_EQ(seven.path, text("/a.jpg"));
    EXPECT_EQ(seven.contentType, text("image/jpeg"));
    EXPECT_EQ(kr::package3mf::FindTexture(textures, 0).path, text("/c.png")) << "as a missing texid reads";
    EXPECT_EQ(kr::package3mf::FindTexture(textures, 9).id, -1);
}

TEST(Model3MFTexture, ReadsAGroupUpToItsEndTag)
{
    Model3MF model;
    QXmlStreamReader reader(QByteArray("<m><texture2dgroup id='1'><a><tex2coord u='1'/></a></texture2dgroup>"
                                       "<tex2coord u='2'/></m>"));
    reader.readNextStartElement();
    reader.readNextStartElement();
    EXPECT_TRUE(model.ParserTexture(reader));
    EXPECT_TRUE(reader.isEndElement());
    EXPECT_EQ(reader.name(), QLatin1String("texture2dgroup"));
    EXPECT_EQ(model.GetTextureGroups().at(0).coords, (Coordinates{{1, 0}}));
}

TEST(Model3MFTexture, KeepsAGroupThatIsCutShort)
{
    Model3MF model;
    EXPECT_TRUE(Parse(model, "<texture2dgroup id='1'><tex2coord u='1' v='2'/><tex2coord u='3"));
    EXPECT_EQ(model.GetTextureGroups().at(0).coords, (Coordinates{{1, 2}}));
}

TEST(Model3MFTexture, ComparesNamesWithoutPrefixes)
{
    Model3MF model;
    ASSERT_TRUE(Parse(model, "<m:texture2dgroup xmlns:m='urn:m' m:id='4'><m:tex2coord m:u='1' v='2'/>"
                             "</m:texture2dgroup>"));
    EXPECT_EQ(model.GetTextureGroups().at(0).id, 4);
    EXPECT_EQ(model.GetTextureGroups().at(0).coords, (Coordinates{{1, 2}}));
}

TEST(Model3MFTexture, IsNotReadByALoad)
{
    Model3MF model;
    ASSERT_TRUE(model.LoadModel("<model><texture2d id='1' path='/3D/a.png' contenttype='image/png'/>"
                                "<texture2dgroup id='2' texid='1'><tex2coord u='0' v='0'/></texture2dgroup>"
                                "</model>"));
    EXPECT_TRUE(model.GetTextures().empty());
    EXPECT_TRUE(model.GetTextureGroups().empty());
    EXPECT_TRUE(model.GetTextureImages().isEmpty());
    EXPECT_EQ(&model.GetTextureImages(), &model.GetTextureImages()) << "no copy";
}

TEST(Model3MFTexture, HandsOutCopiesOfItsGroups)
{
    Model3MF model;
    ASSERT_TRUE(Parse(model, "<texture2dgroup id='1'><tex2coord u='1' v='2'/></texture2dgroup>"));
    std::vector<Model3MF::TextureGroup> groups = model.GetTextureGroups();
    groups[0].coords.clear();
    groups[0].id = 9;
    EXPECT_EQ(model.GetTextureGroups().at(0).id, 1);
    EXPECT_EQ(model.GetTextureGroups().at(0).coords.size(), 1U);
}
