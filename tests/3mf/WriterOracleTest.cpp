#include <limits>
#include <memory>
#include <random>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "fileformat/3mf/GeneralNumber_p.h"
#include "fileformat/3mf/PackageDocuments_p.h"
#include "tests/3mf/PlainPackageWriter.h"

namespace {

using Object = Model3MF::ModelObjectInfo;

class RandomPackage : public Model3MF {
public:
    explicit RandomPackage(unsigned seed) : m_engine(seed) {}

    // Random content in all that the model part shows.
    void Fill()
    {
        objects.clear();
        m_meshes.clear();
        SetUnit(Text());
        SetMaterial({Below(4) - 1, {}});
        BaseMaterial material = GetMaterial();
        for (int left = Below(4); left > 0; --left)
            material.colors.push_back(Text());
        SetMaterial(material);
        SetDescription({});
        for (int left = Below(4); left > 0; --left)
            AddDescription(Text(), Text());
        for (int left = Below(4); left > 0; --left)
            objects.push_back(OneObject());
        offset = Point();
    }

    std::vector<Object> objects;
    Vector3D<float> offset;

private:
    int Below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(m_engine); }

    QString Text()
    {
        // All that XML can hold: else the plain writer ceases to write.
        const uint characters[] = {'<',     '>',      '&',  '"',  '\'', '\t',   '\n',   '\r',   ' ',
                                   ']',     0x7F,     0x85, 0xA0, 0xE9, 0x2028, 0x6F22, 0xFEFF, 0xFFFD,
                                   0x1F600, 0x10FFFF, 'a',  'b',  '1',  ';',    '#'};
        QString text;
        for (int left = Below(3) == 0 ? 0 : Below(12); left > 0; --left) {
            const uint character = characters[Below(static_cast<int>(std::size(characters)))];
            text += QString::fromUcs4(&character, 1);
        }
        return text;
    }

    float Coordinate()
    {
        const float special[] = {0.0f,
                                 -0.0f,
                                 1e-4f,
                                 9.99999e5f,
                                 999999.5f,
                                 1e6f,
                                 1000005.0f,
                                 1e-45f,
                                 3.4e38f,
                                 std::numeric_limits<float>::infinity(),
                                 -std::numeric_limits<float>::infinity(),
                                 std::numeric_limits<float>::quiet_NaN()};
        if (Below(8) == 0)
            return special[Below(static_cast<int>(std::size(special)))];
        return std::ldexp(std::uniform_real_distribution<float>(-1, 1)(m_engine), Below(40) - 20);
    }
    Vector3D<float> Point() { return {Coordinate(), Coordinate(), Coordinate()}; }
    int Index() { return Below(10) == 0 ? static_cast<int>(m_engine()) : Below(1000); }

    Object OneObject()
    {
        m_meshes.push_back(std::make_unique<Mesh>(0.03f));
        Mesh& mesh = *m_meshes.back();
        for (int left = Below(2) * Below(40); left > 0; --left)
            mesh.GetVerticesVecPtr()->push_back(Point());
        for (int left = Below(2) * Below(40); left > 0; --left)
            mesh.GetFacesVecPtr()->push_back(TriangleFace(Index(), Index(), Index()));
        Object object;
        object.mesh = &mesh;
        object.name = Text();
        object.position = Point();
        object.offset = Point();
        for (int i = 0; i < 16; ++i)
            object.transform.set(i / 4, i % 4, static_cast<double>(Coordinate()));
        return object;
    }

    std::mt19937 m_engine;
    std::vector<std::unique_ptr<Mesh>> m_meshes;
};

QByteArray General6(float value)
{
    char text[kr::package3mf::kGeneral6Capacity];
    const char* const end = kr::package3mf::FormatGeneral6(text, value);
    return QByteArray(text, static_cast<int>(end - text));
}

QByteArray ByQt(float value)
{
    return QStringLiteral("%1").arg(static_cast<double>(value), 0, 'g', -1).toLatin1();
}

float FloatOf(std::uint32_t bits)
{
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

} // namespace

TEST(ModelWriter, WritesByteForByteWhatAnXmlWriterWrites)
{
    RandomPackage package(3);
    QByteArray document;
    for (int i = 0; i < 5'000; ++i) {
        package.Fill();
        kr::package3mf::BuildModel(package, package.objects, package.offset, document);
        ASSERT_EQ(document.toStdString(),
                  test::WriteModelPlainly(package, package.objects, package.offset).toStdString());
    }
}

TEST(ModelWriter, ReplacesTheDocument)
{
    QByteArray document = "old";
    kr::package3mf::BuildModel(Model3MF(), {}, {}, document);
    EXPECT_TRUE(document.startsWith("<?xml"));
}

TEST(PackageDocuments, ReplaceWhatTheBytesHeld)
{
    QByteArray contentTypes = "old";
    kr::package3mf::BuildContentTypes(contentTypes);
    EXPECT_TRUE(contentTypes.startsWith("<?xml"));
    QByteArray relationships = "old";
    kr::package3mf::BuildPackageRelationships(true, relationships);
    EXPECT_TRUE(relationships.startsWith("<?xml"));
}

TEST(TextureRelationships, CountFromTenInOrderOfPaths)
{
    QByteArray document = "old";
    kr::package3mf::BuildTextureRelationships(
        {{QStringLiteral("b.png"), {}}, {QStringLiteral("3D/<a>.png"), "picture"}}, document);
    EXPECT_EQ(
        document,
        QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                   "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">\n"
                   "    <Relationship Target=\"/3D/&lt;a&gt;.png\" Id=\"rel10\""
                   " Type=\"http://schemas.microsoft.com/3dmanufacturing/2013/01/3dtexture\"/>\n"
                   "    <Relationship Target=\"/b.png\" Id=\"rel11\""
                   " Type=\"http://schemas.microsoft.com/3dmanufacturing/2013/01/3dtexture\"/>\n"
                   "</Relationships>\n"));
}

TEST(GeneralNumber, HasSixSignificantDigits)
{
    EXPECT_EQ(General6(0.1f), "0.1");
    EXPECT_EQ(General6(123.4567f), "123.457");
    EXPECT_EQ(General6(-1234.5f), "-1234.5");
    EXPECT_EQ(General6(100000.0f), "100000");
    EXPECT_EQ(General6(999999.4f), "999999");
    EXPECT_EQ(General6(0.0001234567f), "0.000123457");
}

TEST(GeneralNumber, HasExponentWhereItIsShorter)
{
    EXPECT_EQ(General6(999999.5f), "1e+06");
    EXPECT_EQ(General6(-1234567.8f), "-1.23457e+06");
    EXPECT_EQ(General6(1e-5f), "1e-05");
    EXPECT_EQ(General6(1e-4f), "0.0001");
    EXPECT_EQ(General6(3.4028235e38f), "3.40282e+38");
    EXPECT_EQ(General6(1e-45f), "1.4013e-45");
}

TEST(GeneralNumber, RoundsTiesAwayFromZero)
{
    EXPECT_EQ(General6(0.5000005f), ByQt(0.5000005f));
    EXPECT_EQ(General6(1024.125f), "1024.13");
    EXPECT_EQ(General6(-1024.125f), "-1024.13");
    EXPECT_EQ(General6(100000.5f), "100001");
    EXPECT_EQ(General6(1000005.0f), "1.00001e+06");
    EXPECT_EQ(General6(1000015.0f), "1.00002e+06");
}

TEST(GeneralNumber, NamesWhatIsNoNumber)
{
    EXPECT_EQ(General6(0.0f), "0");
    EXPECT_EQ(General6(-0.0f), "0");
    EXPECT_EQ(General6(std::numeric_limits<float>::infinity()), "inf");
    EXPECT_EQ(General6(-std::numeric_limits<float>::infinity()), "-inf");
    EXPECT_EQ(General6(std::numeric_limits<float>::quiet_NaN()), "nan");
    EXPECT_EQ(General6(-std::numeric_limits<float>::quiet_NaN()), "nan");
}

TEST(GeneralNumber, IsThatOfQtForFloatsOfEverySize)
{
    std::mt19937 random(5);
    for (int i = 0; i < 1'000'000; ++i) {
        const float value = FloatOf(static_cast<std::uint32_t>(random()));
        ASSERT_EQ(General6(value), ByQt(value)) << value;
    }
}

TEST(GeneralNumber, IsThatOfQtForUsualCoordinates)
{
    std::mt19937 random(6);
    std::uniform_real_distribution<float> coordinate(-1000, 1000);
    for (int i = 0; i < 1'000'000; ++i) {
        // Short fractions in between: these make ties.
        const float any = coordinate(random);
        const float value = i % 2 == 0 ? any : std::round(any * 1024) / 1024;
        ASSERT_EQ(General6(value), ByQt(value)) << value;
    }
}

TEST(GeneralNumber, IsThatOfQtNextToPowersOfTen)
{
    for (int power = -45; power <= 38; ++power) {
        const float center = static_cast<float>(std::pow(10.0, power));
        std::uint32_t bits;
        std::memcpy(&bits, &center, sizeof bits);
        for (std::uint32_t near = bits < 200 ? 0 : bits - 200; near < bits + 200; ++near)
            ASSERT_EQ(General6(FloatOf(near)), ByQt(FloatOf(near))) << FloatOf(near);
    }
}
