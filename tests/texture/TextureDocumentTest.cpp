#include <random>

#include "tests/texture/TextureSupport.h"

// The text of the picture is decoded apart from the rest of a document. Nothing must show of that: loading
// the bytes gives what loading the object gives that Qt parses from them.

namespace {

using test::Text;

const QByteArray& Picture()
{
    static const QByteArray kPicture = test::Encoded(test::RandomPicture(3, 2), "PNG").toBase64();
    return kPicture;
}

const QByteArray& OtherPicture()
{
    static const QByteArray kPicture = test::Encoded(test::RandomPicture(4, 5), "PNG").toBase64();
    return kPicture;
}

/// @return whether there was a picture
bool LoadsAsParsedWhole(const QByteArray& bytes)
{
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    TextureFile expected, texture;
    const bool hasPicture = !document.isNull() && expected.LoadFromJsonObject(document.object());
    EXPECT_EQ(texture.LoadFromJsonBuffer(bytes), hasPicture) << bytes.toStdString();
    EXPECT_EQ(texture.GetImage(), expected.GetImage()) << bytes.toStdString();
    EXPECT_EQ(test::SavedBytes(texture), test::SavedBytes(expected)) << bytes.toStdString();
    return hasPicture;
}

QImage LoadedPicture(const QByteArray& bytes)
{
    EXPECT_TRUE(LoadsAsParsedWhole(bytes));
    TextureFile texture;
    EXPECT_TRUE(texture.LoadFromJsonBuffer(bytes));
    return texture.GetImage();
}

} // namespace

TEST(TextureDocument, PictureMayStandAnywhereAndInAnyLayout)
{
    for (const char* layout : {"{\"image_data\":\"%\"}", "{\n \"image_data\" \t:\r\n \"%\" }",
                               "{\"header\": {\"texture_name\": \"a\"}, \"image_data\": \"%\"}",
                               "{\"image_data\": \"%\", \"settings\": {\"texture_repeat_x\": 3}}"})
        EXPECT_EQ(LoadedPicture(QByteArray(layout).replace("%", Picture())), test::RandomPicture(3, 2))
            << layout;
}

TEST(TextureDocument, PictureOfAnInnerObjectIsNotThePicture)
{
    EXPECT_FALSE(LoadsAsParsedWhole("{\"header\": {\"image_data\": \"" + Picture() + "\"}}"));
    EXPECT_EQ(LoadedPicture("{\"header\": {\"image_data\": \"" + OtherPicture() + "\"}, \"image_data\": \"" +
                            Picture() + "\"}"),
              test::RandomPicture(3, 2));
}

TEST(TextureDocument, LastOfSeveralPicturesCounts)
{
    EXPECT_EQ(
        LoadedPicture("{\"image_data\": \"" + OtherPicture() + "\", \"image_data\": \"" + Picture() + "\"}"),
        test::RandomPicture(3, 2));
    EXPECT_FALSE(LoadsAsParsedWhole("{\"image_data\": \"" + Picture() + "\", \"image_data\": 5}"));
}

TEST(TextureDocument, EscapesMeanWhatTheyMeanInJson)
{
    EXPECT_EQ(LoadedPicture("{\"image\\u005fdata\": \"" + Picture() + "\"}"), test::RandomPicture(3, 2));
    EXPECT_EQ(LoadedPicture("{\"image_data\": \"\\u00" + QByteArray::number(Picture()[0], 16) +
                            Picture().mid(1) + "\"}"),
              test::RandomPicture(3, 2));
    EXPECT_EQ(LoadedPicture("{\"image_data\": \"" + QByteArray(Picture()).replace("/", "\\/") + "\"}"),
              test::RandomPicture(3, 2));
    EXPECT_FALSE(LoadsAsParsedWhole("{\"a\\\"image_data\": \"" + Picture() + "\"}"));
    EXPECT_EQ(
        LoadedPicture("{\"header\": {\"texture_name\": \"\\\"\"}, \"image_data\": \"" + Picture() + "\"}"),
        test::RandomPicture(3, 2));
}

TEST(TextureDocument, PictureDoesNotEndAtAnEscapedQuote)
{
    for (const int length : {0, 1, 2, 3}) {
        const QByteArray text = Picture() + QByteArray(length, 'A') + '\\';
        EXPECT_FALSE(LoadsAsParsedWhole("{\"image_data\": \"" + text + "\", \"version\": 1}"));
        EXPECT_TRUE(LoadsAsParsedWhole("{\"image_data\": \"" + text + "\"\", \"version\": 1}"));
    }
}

TEST(TextureDocument, NoTextOfItsOwnIsTakenForThePicture)
{
    EXPECT_FALSE(LoadsAsParsedWhole("{\"image_data\": \"?picture?\"}"));
    EXPECT_FALSE(LoadsAsParsedWhole("{\"a\": {\"image_data\": \"" + Picture() +
                                    "\"}, \"image_data\": \"?picture?\"}"));
    EXPECT_FALSE(LoadsAsParsedWhole("{\"a\": {\"image_data\": \"" + Picture() +
                                    "\"}, \"image_data\": \"\\u003fpicture?\"}"));
    EXPECT_TRUE(LoadsAsParsedWhole("{\"header\": {\"texture_name\": \"?picture?\"}, \"image_data\": \"" +
                                   Picture() + "\"}"));
}

TEST(TextureDocument, PictureInABrokenDocumentIsNotLoaded)
{
    const QByteArray broken[] = {"{\"image_data\": \"" + Picture() + "\"",
                                 "{\"image_data\": \"" + Picture(),
                                 "{\"image_data\" \"" + Picture() + "\"}",
                                 "{\"image_data\": \"" + Picture() + "\"} x",
                                 "{\"x\"image_data\": \"" + Picture() + "\"}",
                                 "[\"image_data\": \"" + Picture() + "\"]",
                                 "{\"image_data\":",
                                 "{\"image_data\"",
                                 "\"image_data\": \"" + Picture() + "\""};
    for (const QByteArray& bytes : broken)
        EXPECT_FALSE(LoadsAsParsedWhole(bytes));
}

TEST(TextureDocument, ChangedAnywhereItLoadsAsParsedWhole)
{
    const QByteArray whole = "{\"header\": {\"texture_name\": \"oak\"}, \"image_data\": \"" + Picture() +
                             "\", \"settings\": {\"texture_wrapping\": \"mirror\"}, \"version\": 1}";
    const QByteArray pieces[] = {"\"",        "\\", "{", "}", ":", ",", "=", "\n", "\"image_data\": \"",
                                 "?picture?", "[",  "A"};
    std::mt19937 random(1);
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    int pictureCount = 0;
    for (int round = 0; round < 5000; ++round) {
        QByteArray bytes = whole;
        for (int left = 1 + below(3); left > 0; --left) {
            const int at = below(bytes.size());
            bytes.replace(at, below(3), below(4) ? pieces[below(12)] : QByteArray());
        }
        pictureCount += LoadsAsParsedWhole(bytes) ? 1 : 0;
    }
    EXPECT_GT(pictureCount, 100);
}
