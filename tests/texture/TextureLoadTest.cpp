#include <cmath>

#include <QJsonArray>

#include "tests/common/Directory.h"
#include "tests/texture/TextureSupport.h"

namespace {

using test::Text;

/// A document with the key @p key of @p section set to a value, all else as saved.
QJsonObject DocumentWith(const char* section, const char* key, const QJsonValue& value)
{
    MeshMaterialParameters parameters;
    parameters.wrapS = parameters.wrapT = MeshMaterialParameters::Mirror;
    parameters.borderColor = Vector4D<float>(1, 1, 1, 1);
    parameters.matrix.translation = Vector3D<double>(1, 2, 0);
    parameters.matrix.repeat = Vector3D<double>(3, 4, 1);
    parameters.matrix.rotation.z = 5;
    QJsonObject document = test::SavedObject(test::TextureOf(parameters));
    if (!key) {
        document.insert(Text(section), value);
        return document;
    }
    QJsonObject inner = document.value(Text(section)).toObject();
    inner.insert(Text(key), value);
    document.insert(Text(section), inner);
    return document;
}

TextureFile Loaded(const QJsonObject& document)
{
    TextureFile texture = test::TextureOf(test::RandomPicture(9, 9), Text("before.png"));
    const bool isLoaded = texture.LoadFromJsonObject(document);
    EXPECT_EQ(isLoaded, !texture.GetImage().isNull());
    return texture;
}

TextureFile LoadedWith(const char* section, const char* key, const QJsonValue& value)
{
    return Loaded(DocumentWith(section, key, value));
}

MeshMaterialParameters ParametersWith(const char* key, const QJsonValue& value)
{
    return LoadedWith("settings", key, value).GetParameters();
}

Vector4D<float> ColorFrom(const QJsonValue& value)
{
    return ParametersWith("texture_border_color", value).borderColor;
}

/// One value of each type that a JSON document can hold.
const QJsonValue kNull, kBool(true), kNumber(7.5), kString(Text("text")), kArray(QJsonArray{1, Text("a")}),
    kObject(QJsonObject{{Text("a"), 1}});

const struct {
    const char* key;
    double (*value)(const MeshMaterialMatrix& matrix);
    double whenMissing;
} kNumberKeys[] = {
    {"texture_translation_x", [](const MeshMaterialMatrix& matrix) { return matrix.translation.x; }, 0},
    {"texture_translation_y", [](const MeshMaterialMatrix& matrix) { return matrix.translation.y; }, 0},
    {"texture_repeat_x", [](const MeshMaterialMatrix& matrix) { return matrix.repeat.x; }, 1},
    {"texture_repeat_y", [](const MeshMaterialMatrix& matrix) { return matrix.repeat.y; }, 1},
    {"texture_rotation_z", [](const MeshMaterialMatrix& matrix) { return matrix.rotation.z; }, 0},
};

} // namespace

TEST(TextureLoad, GivesBackWhatWasSaved)
{
    MeshMaterialParameters parameters;
    parameters.wrapS = MeshMaterialParameters::ClampToEdge;
    parameters.wrapT = MeshMaterialParameters::Mirror;
    parameters.borderColor = Vector4D<float>(1, 0.5f, 0.25f, 0);
    parameters.matrix.translation = Vector3D<double>(1.23456, -2.34567, 3.5);
    parameters.matrix.rotation = Vector3D<double>(10, 20, 30.456);
    parameters.matrix.repeat = Vector3D<double>(1.234, 5.678, 9);
    const QImage image = test::RandomPicture(31, 13);
    const TextureFile saved = test::TextureOf(image, Text("dark oak.png"), parameters);

    TextureFile texture;
    ASSERT_TRUE(texture.LoadFromJsonBuffer(test::SavedBytes(saved)));
    EXPECT_EQ(texture.GetImage(), image);
    EXPECT_EQ(texture.GetImage().format(), QImage::Format_RGB32);
    EXPECT_EQ(texture.getTextureName(), Text("dark oak"));
    EXPECT_EQ(texture.GetPatternID(), saved.GetPatternID());
    MeshMaterialParameters expected;
    expected.wrapS = expected.wrapT = MeshMaterialParameters::ClampToEdge;
    expected.borderColor = Vector4D<float>(1, 127 / 255.0f, 63 / 255.0f, 0);
    expected.matrix.translation = Vector3D<double>(1.2346, -2.3457, 0);
    expected.matrix.rotation = Vector3D<double>(0, 0, 30.46);
    expected.matrix.repeat = Vector3D<double>(1.23, 5.68, 1);
    expected.matrix.updateMatrix();
    test::ExpectSameParameters(texture.GetParameters(), expected);
}

TEST(TextureLoad, SavingAgainGivesTheSameBytes)
{
    for (int level = 0; level < 256; ++level) {
        MeshMaterialParameters parameters;
        const auto component = static_cast<float>(level) / 255;
        parameters.borderColor = Vector4D<float>(component, 1 - component, component, component);
        parameters.matrix.translation.x = level / 7.0;
        const QByteArray bytes = test::SavedBytes(test::TextureOf(parameters));
        TextureFile texture;
        ASSERT_TRUE(texture.LoadFromJsonBuffer(bytes));
        const QString color = test::SavedSettings(texture).value(Text("texture_border_color")).toString();
        EXPECT_EQ(color.mid(1, 4), QString::number(0x10000 | level << 8 | level, 16).mid(1));
        EXPECT_EQ(test::SavedBytes(texture), bytes);
    }
}

TEST(TextureLoad, PictureComesBackToTheMeshBitForBit)
{
    for (int side = 1; side < 40; ++side) {
        const MeshTextureInfo info =
            test::InfoOf(test::RandomPicture(side, 41 - side, unsigned(side)), Text("oak.png"));
        TextureFile saved, loaded;
        ASSERT_TRUE(saved.Load(&info, {}, test::HostNames()));
        ASSERT_TRUE(loaded.LoadFromJsonBuffer(test::SavedBytes(saved)));
        MeshTextureInfo back;
        ASSERT_TRUE(loaded.getTextureInfo(back, 0));
        EXPECT_EQ(back.width, info.width);
        EXPECT_EQ(back.height, info.height);
        EXPECT_EQ(back.pixels, info.pixels);
    }
}

TEST(TextureLoad, OrderOfKeysDoesNotMatter)
{
    TextureFile texture;
    EXPECT_FALSE(
        texture.LoadFromJsonBuffer("{\"version\": 9, \"settings\": {\"texture_wrapping\": \"mirror\"},"
                                   "\"image_data\": \"\", \"header\": {\"texture_name\": \"oak\"}}"));
    EXPECT_EQ(texture.getTextureName(), Text("oak"));
    EXPECT_EQ(texture.GetParameters().wrapS, 1);
}

TEST(TextureLoad, KeysAreToldByTheirExactLetters)
{
    TextureFile texture;
    EXPECT_FALSE(texture.LoadFromJsonBuffer(
        "{\"Header\": {\"texture_name\": \"oak\"}, \"header\": {\"Texture_Name\": \"elm\", \"texture_ID\": "
        "\"5\"},"
        "\"SETTINGS\": {\"texture_repeat_x\": 5}, \"settings\": {\"texture_Repeat_x\": 6, \"header\": 1},"
        "\"Image_data\": \"x\", \"more\": [1, 2]}"));
    EXPECT_EQ(texture.getTextureName(), Text("untitiled"));
    EXPECT_EQ(texture.GetPatternID(), QString());
    test::ExpectSameParameters(texture.GetParameters(), [] {
        MeshMaterialParameters parameters;
        parameters.matrix.updateMatrix();
        return parameters;
    }());
}

TEST(TextureLoad, IdentifierIsTakenAsItIs)
{
    EXPECT_EQ(LoadedWith("header", "texture_id", Text(" {any} text ")).GetPatternID(), Text(" {any} text "));
}

TEST(TextureLoad, NameIsTrimmed)
{
    EXPECT_EQ(LoadedWith("header", "texture_name", Text("\t dark oak \n")).getTextureName(),
              Text("dark oak"));
}

TEST(TextureLoad, NameOfBlanksBecomesUntitiled)
{
    for (const char* name : {"  ", "", "\t\n"})
        EXPECT_EQ(LoadedWith("header", "texture_name", Text(name)).getTextureName(), Text("untitiled"))
            << name;
}

TEST(TextureLoad, MissingNameBecomesUntitiled)
{
    EXPECT_EQ(Loaded({}).getTextureName(), Text("untitiled"));
}

TEST(TextureLoad, HeaderTextsOfOtherTypesAreEmpty)
{
    for (const QJsonValue& value : {kNull, kBool, kNumber, kArray, kObject}) {
        EXPECT_EQ(LoadedWith("header", "texture_id", value).GetPatternID(), QString());
        EXPECT_EQ(LoadedWith("header", "texture_name", value).getTextureName(), Text("untitiled"));
    }
}

TEST(TextureLoad, SectionsOfOtherTypesAreEmptyOnes)
{
    for (const QJsonValue& value : {kNull, kBool, kNumber, kString, kArray}) {
        const TextureFile headless = LoadedWith("header", nullptr, value);
        EXPECT_EQ(headless.GetPatternID(), QString());
        EXPECT_EQ(headless.getTextureName(), Text("untitiled"));
        EXPECT_EQ(headless.GetParameters().wrapS, 1) << "the rest is read";
        const TextureFile unset = LoadedWith("settings", nullptr, value);
        EXPECT_EQ(unset.getTextureName(), Text("oak"));
        EXPECT_EQ(unset.GetParameters().wrapS, 0);
        EXPECT_EQ(unset.GetParameters().matrix.repeat, (Vector3D<double>(1, 1, 1)));
        EXPECT_FALSE(unset.GetImage().isNull());
    }
}

TEST(TextureLoad, NumbersAreTakenInFull)
{
    for (const auto& tested : kNumberKeys)
        EXPECT_EQ(tested.value(ParametersWith(tested.key, -1.23456789).matrix), -1.23456789) << tested.key;
}

TEST(TextureLoad, NumbersOfOtherTypesAreZero)
{
    for (const auto& tested : kNumberKeys)
        for (const QJsonValue& value : {kNull, kBool, kString, kArray, kObject, QJsonValue(Text("5"))})
            EXPECT_EQ(tested.value(ParametersWith(tested.key, value).matrix), 0.0) << tested.key;
}

TEST(TextureLoad, MissingNumbersKeepTheirDefaults)
{
    for (const auto& tested : kNumberKeys) {
        QJsonObject document = DocumentWith("settings", "more", 1);
        QJsonObject settings = document.value(Text("settings")).toObject();
        settings.remove(Text(tested.key));
        document.insert(Text("settings"), settings);
        EXPECT_EQ(tested.value(Loaded(document).GetParameters().matrix), tested.whenMissing) << tested.key;
    }
}

TEST(TextureLoad, WrappingSetsBothModes)
{
    const char* const names[] = {"repeat", "mirror", "clamp_edge", "clamp_border"};
    for (int wrap = 0; wrap < 4; ++wrap) {
        const MeshMaterialParameters parameters = ParametersWith("texture_wrapping", Text(names[wrap]));
        EXPECT_EQ(parameters.wrapS, wrap);
        EXPECT_EQ(parameters.wrapT, wrap);
    }
}

TEST(TextureLoad, OtherWrappingLeavesTheDefault)
{
    for (const QJsonValue& value : {QJsonValue(Text("CLAMP_EDGE")), QJsonValue(Text(" mirror")),
                                    QJsonValue(Text("")), QJsonValue(2), kNull, kBool, kArray, kObject}) {
        EXPECT_EQ(ParametersWith("texture_wrapping", value).wrapS, 0);
        EXPECT_EQ(ParametersWith("texture_wrapping", value).wrapT, 0);
    }
}

TEST(TextureLoad, BorderColorIsAlphaRedGreenBlue)
{
    EXPECT_EQ(ColorFrom(Text("#44112233")),
              Vector4D<float>(0x11 / 255.0f, 0x22 / 255.0f, 0x33 / 255.0f, 0x44 / 255.0f));
}

TEST(TextureLoad, BorderColorMayBeAnyThatQtKnows)
{
    EXPECT_EQ(ColorFrom(Text("#f00")), Vector4D<float>(1, 0, 0, 1));
    EXPECT_EQ(ColorFrom(Text("#00FF00")), Vector4D<float>(0, 1, 0, 1));
    EXPECT_EQ(ColorFrom(Text("#000000fff")), Vector4D<float>(0, 0, 1, 1));
    EXPECT_EQ(ColorFrom(Text("#ffff00000000")), Vector4D<float>(1, 0, 0, 1));
    EXPECT_EQ(ColorFrom(Text("yellow")), Vector4D<float>(1, 1, 0, 1));
    EXPECT_EQ(ColorFrom(Text("transparent")), Vector4D<float>(0, 0, 0, 0));
}

TEST(TextureLoad, WhatIsNoColorIsIgnoredInSilence)
{
    static int printedCount = 0;
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) { ++printedCount; });
    for (const QJsonValue& value :
         {QJsonValue(5), QJsonValue(Text("")), QJsonValue(Text("no colour")), QJsonValue(Text("#12345")),
          QJsonValue(Text("#gggggggg")), QJsonValue(QString(100000, QLatin1Char('#'))), kNull, kBool, kArray,
          kObject})
        EXPECT_EQ(ColorFrom(value), MeshMaterialParameters().borderColor);
    qInstallMessageHandler(previous);
    EXPECT_EQ(printedCount, 0);
}

TEST(TextureLoad, BuildsTheMatrix)
{
    const MeshMaterialMatrix loaded = ParametersWith("texture_rotation_z", 90).matrix;
    MeshMaterialMatrix expected;
    expected.translation = Vector3D<double>(1, 2, 0);
    expected.repeat = Vector3D<double>(3, 4, 1);
    expected.rotation.z = 90;
    expected.updateMatrix();
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(loaded.matrix.get(i / 4, i % 4), expected.matrix.get(i / 4, i % 4)) << i;
    EXPECT_NE(loaded.matrix.get(0, 1), 0.0);
}

TEST(TextureLoad, EmptyObjectGivesDefaultsAndNoPicture)
{
    TextureFile texture = test::TextureOf(test::RandomPicture(3, 3));
    EXPECT_FALSE(texture.LoadFromJsonObject({}));
    EXPECT_EQ(texture.GetPatternID(), QString());
    EXPECT_TRUE(texture.GetImage().isNull());
    EXPECT_EQ(texture.GetParameters().wrapS, 0);
}

TEST(TextureLoad, BufferThatIsNoDocumentLeavesANewObject)
{
    for (const char* text :
         {"", " ", "{", "{}x", "{\"a\": }", "text", "\"text\"", "null", "[1, 2", "{'a': 1}"}) {
        TextureFile texture = test::TextureOf(test::RandomPicture(3, 3));
        EXPECT_FALSE(texture.LoadFromJsonBuffer(text));
        test::ExpectNew(texture);
    }
}

TEST(TextureLoad, BufferWithAnArrayIsReadAsAnEmptyObject)
{
    TextureFile texture = test::TextureOf(test::RandomPicture(3, 3));
    EXPECT_FALSE(texture.LoadFromJsonBuffer("[{\"header\": {\"texture_name\": \"oak\"}}]"));
    EXPECT_EQ(texture.getTextureName(), Text("untitiled"));
    EXPECT_TRUE(texture.GetImage().isNull());
}

TEST(TextureLoad, BufferIsReadAfterAByteOrderMark)
{
    TextureFile texture;
    EXPECT_FALSE(texture.LoadFromJsonBuffer("\xEF\xBB\xBF{\"header\": {\"texture_name\": \"oak\"}}"));
    EXPECT_EQ(texture.getTextureName(), Text("oak"));
}

TEST(TextureLoad, TruncationAtEveryByteLeavesANewObject)
{
    const QByteArray whole = test::SavedBytes(test::TextureOf(test::RandomPicture(3, 3)));
    TextureFile texture;
    for (int size = 0; size < whole.size() - 1; ++size) {
        EXPECT_FALSE(texture.LoadFromJsonBuffer(whole.left(size))) << size;
        test::ExpectNew(texture);
    }
    EXPECT_TRUE(texture.LoadFromJsonBuffer(whole.left(whole.size() - 1))) << "without the last line feed";
}

TEST(TextureLoad, DeepNestingEnds)
{
    TextureFile texture;
    EXPECT_FALSE(texture.LoadFromJsonBuffer(QByteArray(1'000'000, '[')));
    EXPECT_FALSE(texture.LoadFromJsonBuffer(QByteArray("{\"header\":").repeated(100'000)));
    test::ExpectNew(texture);
}

TEST(TextureLoad, FileGivesWhatTheBufferGives)
{
    const test::Directory directory;
    const TextureFile saved = test::TextureOf(test::RandomPicture(17, 9));
    TextureFile texture;
    ASSERT_TRUE(texture.LoadFile(directory.Write(test::SavedBytes(saved))));
    EXPECT_EQ(test::SavedBytes(texture), test::SavedBytes(saved));
}

TEST(TextureLoad, FileThatCannotBeReadLeavesANewObject)
{
    const test::Directory directory;
    for (const QString& path : {directory.Path(Text("missing")), directory.Path(QString()), QString(),
                                directory.Write("no JSON"), directory.Write("[]", Text("array"))}) {
        TextureFile texture = test::TextureOf(test::RandomPicture(3, 3));
        EXPECT_FALSE(texture.LoadFile(path)) << path.toStdString();
        test::ExpectNew(texture);
    }
}
