#include <cmath>
#include <limits>

#include <QFileInfo>

#include "tests/common/Directory.h"
#include "tests/texture/TextureSupport.h"

namespace {

using test::Text;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

QString BorderColor(float red, float green, float blue, float alpha)
{
    MeshMaterialParameters parameters;
    parameters.borderColor = Vector4D<float>(red, green, blue, alpha);
    return test::SavedSettings(test::TextureOf(parameters)).value(Text("texture_border_color")).toString();
}

QJsonValue Wrapping(int wrapS, int wrapT)
{
    MeshMaterialParameters parameters;
    parameters.wrapS = wrapS;
    parameters.wrapT = wrapT;
    return test::SavedSettings(test::TextureOf(parameters)).value(Text("texture_wrapping"));
}

/// The text of one of the numbers, as it stands in the file.
QByteArray NumberText(const char* key, const MeshMaterialMatrix& matrix)
{
    MeshMaterialParameters parameters;
    parameters.matrix = matrix;
    const QByteArray file = test::SavedBytes(test::TextureOf(parameters));
    const QByteArray begin = QByteArray("\"") + key + "\": ";
    const int at = file.indexOf(begin) + begin.size();
    return file.mid(at, file.indexOf('\n', at) - at).replace(",", "");
}

QByteArray TranslationText(double x)
{
    MeshMaterialMatrix matrix;
    matrix.translation.x = x;
    return NumberText("texture_translation_x", matrix);
}

QByteArray RotationText(double z)
{
    MeshMaterialMatrix matrix;
    matrix.rotation.z = z;
    return NumberText("texture_rotation_z", matrix);
}

} // namespace

TEST(TextureSave, WritesTheWholeDocument)
{
    MeshMaterialParameters parameters;
    parameters.wrapS = parameters.wrapT = MeshMaterialParameters::ClampToBorder;
    parameters.borderColor = Vector4D<float>(1, 0.5f, 0, 1);
    parameters.matrix.translation = Vector3D<double>(0.12345, -3, 99);
    parameters.matrix.rotation = Vector3D<double>(11, 22, 45.678);
    parameters.matrix.repeat = Vector3D<double>(2.5, 1.0 / 3, 99);
    QImage image(1, 1, QImage::Format_RGB32);
    image.fill(qRgb(255, 0, 0));
    const QByteArray picture = test::Encoded(image, "PNG").toBase64();
    const QByteArray expected = "{\n"
                                "    \"header\": {\n"
                                "        \"texture_id\": \"2ed6657d-e927-568b-95e1-2665a8aea6a2\",\n"
                                "        \"texture_name\": \"www.example.com\"\n"
                                "    },\n"
                                "    \"image_data\": \"" +
                                picture +
                                "\",\n"
                                "    \"settings\": {\n"
                                "        \"texture_border_color\": \"#ffff7f00\",\n"
                                "        \"texture_repeat_x\": 2.5,\n"
                                "        \"texture_repeat_y\": 0.33,\n"
                                "        \"texture_rotation_z\": 45.68,\n"
                                "        \"texture_translation_x\": 0.1235,\n"
                                "        \"texture_translation_y\": -3,\n"
                                "        \"texture_wrapping\": \"clamp_border\"\n"
                                "    },\n"
                                "    \"version\": 1\n"
                                "}\n";
    EXPECT_EQ(test::SavedBytes(test::TextureOf(image, Text("www.example.com.png"), parameters)), expected);
}

TEST(TextureSave, TranslationHasFourDecimals)
{
    EXPECT_EQ(TranslationText(1.23456789), "1.2346");
    EXPECT_EQ(TranslationText(0.00004), "0");
    EXPECT_EQ(TranslationText(-0.00004), "0");
    EXPECT_EQ(TranslationText(0.00005), "0.0001");
    EXPECT_EQ(TranslationText(100), "100");
    EXPECT_EQ(TranslationText(1e20), "1e+20");
}

TEST(TextureSave, RepeatAndRotationHaveTwoDecimals)
{
    EXPECT_EQ(RotationText(45.678), "45.68");
    EXPECT_EQ(RotationText(0.125), "0.13") << "a tie goes away from zero";
    EXPECT_EQ(RotationText(1.005), "1") << "the double lies below the text";
    MeshMaterialMatrix matrix;
    matrix.repeat = Vector3D<double>(1.999, -0.005, 0);
    EXPECT_EQ(NumberText("texture_repeat_x", matrix), "2");
    EXPECT_EQ(NumberText("texture_repeat_y", matrix), "-0.01");
}

TEST(TextureSave, NumbersThatAreNotFiniteAreNull)
{
    EXPECT_EQ(TranslationText(double(kNan)), "null");
    EXPECT_EQ(RotationText(double(-kInfinity)), "null");
}

TEST(TextureSave, BorderColorIsTruncatedToLevels)
{
    EXPECT_EQ(BorderColor(1, 0.5f, 0, 1), Text("#ffff7f00"));
    EXPECT_EQ(BorderColor(0, 0, 0, 0), Text("#00000000"));
    EXPECT_EQ(BorderColor(1, 1, 1, 1), Text("#ffffffff"));
    EXPECT_EQ(BorderColor(0.999f, 0.0039f, 10 / 255.0f, 0.25f), Text("#3ffe000a"));
}

TEST(TextureSave, BorderColorIsAlphaRedGreenBlue)
{
    EXPECT_EQ(BorderColor(0x11 / 255.0f, 0x22 / 255.0f, 0x33 / 255.0f, 0x44 / 255.0f), Text("#44112233"));
}

TEST(TextureSave, BorderColorsJustOutsideAreTruncatedIn)
{
    EXPECT_EQ(BorderColor(-0.99f / 255, 255.99f / 255, 0, 1), Text("#ff00ff00"));
}

TEST(TextureSave, BorderColorOutOfRangeIsTransparentBlack)
{
    for (const float outside :
         {-1.01f / 255, 256.01f / 255, -5.0f, 2.0f, 1e30f, -1e30f, kInfinity, -kInfinity, kNan}) {
        EXPECT_EQ(BorderColor(outside, 1, 1, 1), Text("#00000000")) << outside;
        EXPECT_EQ(BorderColor(1, outside, 1, 1), Text("#00000000")) << outside;
        EXPECT_EQ(BorderColor(1, 1, outside, 1), Text("#00000000")) << outside;
        EXPECT_EQ(BorderColor(1, 1, 1, outside), Text("#00000000")) << outside;
    }
}

TEST(TextureSave, WrappingIsThatOfTheFirstMode)
{
    EXPECT_EQ(Wrapping(0, 3), Text("repeat"));
    EXPECT_EQ(Wrapping(1, 0), Text("mirror"));
    EXPECT_EQ(Wrapping(2, 0), Text("clamp_edge"));
    EXPECT_EQ(Wrapping(3, 0), Text("clamp_border"));
}

TEST(TextureSave, OtherWrapModesHaveNoKey)
{
    for (const int wrap : {-1, 4, 1000, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        EXPECT_TRUE(Wrapping(wrap, 0).isUndefined()) << wrap;
}

TEST(TextureSave, PictureIsTheFileThatQtEncodes)
{
    const QImage image = test::RandomPicture(33, 17);
    const QString text = test::SavedObject(test::TextureOf(image)).value(Text("image_data")).toString();
    EXPECT_EQ(QByteArray::fromBase64(text.toLatin1(), QByteArray::AbortOnBase64DecodingErrors),
              test::Encoded(image, "PNG"));
    EXPECT_FALSE(text.contains(QLatin1Char('\n')));
    EXPECT_EQ(text.size() % 4, 0);
}

TEST(TextureSave, EmptyTextureHasAllKeysAndNoPicture)
{
    EXPECT_EQ(test::SavedBytes(TextureFile()), "{\n"
                                               "    \"header\": {\n"
                                               "        \"texture_id\": \"\",\n"
                                               "        \"texture_name\": \"\"\n"
                                               "    },\n"
                                               "    \"image_data\": \"\",\n"
                                               "    \"settings\": {\n"
                                               "        \"texture_border_color\": \"#00000000\",\n"
                                               "        \"texture_repeat_x\": 1,\n"
                                               "        \"texture_repeat_y\": 1,\n"
                                               "        \"texture_rotation_z\": 0,\n"
                                               "        \"texture_translation_x\": 0,\n"
                                               "        \"texture_translation_y\": 0,\n"
                                               "        \"texture_wrapping\": \"repeat\"\n"
                                               "    },\n"
                                               "    \"version\": 1\n"
                                               "}\n");
}

TEST(TextureSave, ObjectKeepsItsOtherKeys)
{
    QJsonObject object = {{Text("kept"), 5}, {Text("version"), 7}, {Text("settings"), 8}};
    const TextureFile texture = test::TextureOf(test::RandomPicture(2, 2));
    texture.GetSaveObject(object);
    QJsonObject expected = test::SavedObject(texture);
    expected.insert(Text("kept"), 5);
    EXPECT_EQ(object, expected);
}

TEST(TextureSave, FileHoldsWhatTheBufferHolds)
{
    const test::Directory directory;
    const QString path =
        directory.Write(QByteArray(100000, 'x'), Text("\xE6\x9C\xA8 \xF0\x9F\xA7\x8A.texture"));
    const TextureFile texture = test::TextureOf(test::RandomPicture(7, 5));
    ASSERT_TRUE(texture.SaveFile(path));
    EXPECT_EQ(test::Directory::Read(path), test::SavedBytes(texture));
}

TEST(TextureSave, FailsWhereNoFileCanBeWritten)
{
    const test::Directory directory;
    const TextureFile texture = test::TextureOf(test::RandomPicture(7, 5));
    EXPECT_FALSE(texture.SaveFile(QString()));
    EXPECT_FALSE(texture.SaveFile(directory.Path(QString())));
    EXPECT_FALSE(texture.SaveFile(directory.Path(Text("missing/a.texture"))));
    EXPECT_FALSE(texture.SaveFile(Text("/dev/full")));
}
