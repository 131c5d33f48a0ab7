#include <sstream>

#include <gtest/gtest.h>

#include "fileformat/texture/TextureFile.h"
#include "tests/common/Bytes.h"
#include "tests/common/PictureFiles.h"
#include "tests/reliability/MalformedRows.h"
#include "tests/texture/TextureSupport.h"

namespace {

using namespace test;

constexpr std::size_t kRowCount = 84;

constexpr QRgb kBrown = qRgb(150, 100, 50);

void AddDifference(std::ostream& text, const char* name, double value, double usual)
{
    if (value != usual)
        text << ' ' << name << ' ' << value;
}

/// What is not as in a new object.
void AddParameters(std::ostream& text, const MeshMaterialParameters& parameters)
{
    const MeshMaterialParameters usual;
    AddDifference(text, "s", parameters.wrapS, usual.wrapS);
    AddDifference(text, "t", parameters.wrapT, usual.wrapT);
    AddDifference(text, "red", double(parameters.borderColor.x), double(usual.borderColor.x));
    AddDifference(text, "green", double(parameters.borderColor.y), double(usual.borderColor.y));
    AddDifference(text, "blue", double(parameters.borderColor.z), double(usual.borderColor.z));
    AddDifference(text, "alpha", double(parameters.borderColor.w), double(usual.borderColor.w));
    AddDifference(text, "x", parameters.matrix.translation.x, usual.matrix.translation.x);
    AddDifference(text, "y", parameters.matrix.translation.y, usual.matrix.translation.y);
    AddDifference(text, "columns", parameters.matrix.repeat.x, usual.matrix.repeat.x);
    AddDifference(text, "rows", parameters.matrix.repeat.y, usual.matrix.repeat.y);
    AddDifference(text, "turn", parameters.matrix.rotation.z, usual.matrix.rotation.z);
}

/// Whether there is a picture, its size and first pixel; the name and the identifier; the parameters.
std::string Read(const QString& path)
{
    TextureFile texture = TextureOf(RandomPicture(3, 3));
    const bool isLoaded = texture.LoadFile(path);
    const QImage& image = texture.GetImage();
    EXPECT_EQ(isLoaded, !image.isNull());
    std::ostringstream text;
    if (isLoaded)
        text << image.width() << 'x' << image.height() << ' ' << std::hex << (image.pixel(0, 0) & 0xffffff)
             << std::dec;
    else
        text << "no picture";
    text << " '" << texture.getTextureName().toStdString() << "' '" << texture.GetPatternID().toStdString()
         << '\'';
    AddParameters(text, texture.GetParameters());
    return text.str();
}

// What is left of a file that is refused altogether.
constexpr char kNewObject[] = "no picture '' ''";
constexpr char kGood[] = "2x1 966432 'oak' 'id'";

QByteArray PictureText()
{
    return Encoded(PlainPicture(2, 1, kBrown), "PNG").toBase64();
}

constexpr char kHeader[] = R"("header":{"texture_id":"id","texture_name":"oak"})";

/// A document with this beside a header and a picture.
QByteArray With(const QByteArray& rest)
{
    return QByteArray("{") + kHeader + rest + ",\"image_data\":\"" + PictureText() + "\"}";
}

QByteArray WithSetting(const QByteArray& setting)
{
    return With(",\"settings\":{" + setting + '}');
}

QByteArray WithHeader(const QByteArray& header)
{
    return "{\"header\":" + header + ",\"image_data\":\"" + PictureText() + "\"}";
}

/// A document whose picture is this value.
QByteArray WithPicture(const QByteArray& value)
{
    return QByteArray("{") + kHeader + ",\"image_data\":" + value + '}';
}

QByteArray WithPictureFile(const QByteArray& bytes)
{
    return WithPicture('"' + bytes.toBase64() + '"');
}

MalformedRows Documents()
{
    const QByteArray good = With("");
    return {
        {"an empty file", "", kNewObject},
        {"a file of blanks", "  \n\n ", kNewObject},
        {"a file of zeros", QByteArray(100, '\0'), kNewObject},
        {"a picture for the document", Encoded(PlainPicture(2, 1, kBrown), "PNG"), kNewObject},
        {"an opening brace alone", "{", kNewObject},
        {"no closing brace", good.left(good.size() - 1), kNewObject},
        {"a closing brace too many", good + '}', kNewObject},
        {"a second document behind the first", good + good, kNewObject},
        {"a comma behind the last value", QByteArray(good).replace("\"}", "\",}"), kNewObject},
        {"no comma between two values", QByteArray(good).replace("},", "}"), kNewObject},
        {"no colon behind a key", QByteArray(good).replace("\"header\":", "\"header\""), kNewObject},
        {"keys without quotes", QByteArray(good).replace("\"header\"", "header"), kNewObject},
        {"keys in single quotes", QByteArray(good).replace('"', '\''), kNewObject},
        {"a remark in front", "// a texture\n" + good, kNewObject},
        {"an array at the top", '[' + good + ']', kNewObject},
        {"a text at the top", "\"texture\"", kNewObject},
        {"a number at the top", "1", kNewObject},
        {"nothing at the top", "null", kNewObject},
        {"an empty object", "{}", "no picture 'untitiled' ''"},
        {"a byte-order mark", "\xef\xbb\xbf" + good, kGood},
        {"two bytes a character", Utf16(good), kNewObject},
        {"text that is no UTF-8", QByteArray(good).replace("oak", "\xff\xfe"), kNewObject},
        {"a zero in a text", QByteArray(good).replace("oak", Bytes("o\0k")),
         std::string("2x1 966432 'o\0k' 'id'", 21)},
        {"values nested 2,000 deep", With(",\"deep\":" + QByteArray(2000, '[') + QByteArray(2000, ']')),
         kNewObject},
        {"values nested 100 deep", With(",\"deep\":" + QByteArray(100, '[') + QByteArray(100, ']')), kGood},
        {"an unknown key of 100,000 letters", With(",\"" + QByteArray(100000, 'k') + "\":1"), kGood},
        {"a version that nobody knows", With(",\"version\":99"), kGood},
        {"a version of another type", With(",\"version\":[]"), kGood},
    };
}

MalformedRows Headers()
{
    return {
        {"no header", "{\"image_data\":\"" + PictureText() + "\"}", "2x1 966432 'untitiled' ''"},
        {"a text for the header", WithHeader("\"oak\""), "2x1 966432 'untitiled' ''"},
        {"an array for the header", WithHeader("[{\"texture_name\":\"oak\"}]"), "2x1 966432 'untitiled' ''"},
        {"an empty header", WithHeader("{}"), "2x1 966432 'untitiled' ''"},
        {"the header's key in capitals", QByteArray(With("")).replace("header", "HEADER"),
         "2x1 966432 'untitiled' ''"},
        {"a number for the name", WithHeader(R"({"texture_name":7,"texture_id":"id"})"),
         "2x1 966432 'untitiled' 'id'"},
        {"a number for the identifier", WithHeader(R"({"texture_name":"oak","texture_id":7})"),
         "2x1 966432 'oak' ''"},
        {"a name of blanks", WithHeader(R"({"texture_name":" \t\n "})"), "2x1 966432 'untitiled' ''"},
        {"blanks around a name", WithHeader(R"({"texture_name":"  dark oak "})"), "2x1 966432 'dark oak' ''"},
        {"a name given twice", WithHeader(R"({"texture_name":"oak","texture_name":"elm"})"),
         "2x1 966432 'elm' ''"},
        {"an unknown escape in a name", WithHeader(R"({"texture_name":"o\qk"})"), "2x1 966432 'oqk' ''"},
        {"an escape without its digits", WithHeader(R"({"texture_name":"\u12"})"), kNewObject},
        {"an identifier that is no identifier", WithHeader(R"({"texture_id":" {x} "})"),
         "2x1 966432 'untitiled' ' {x} '"},
        {"two headers", With(R"(,"header":{"texture_name":"elm"})"), "2x1 966432 'elm' ''"},
    };
}

MalformedRows Settings()
{
    const std::string good = kGood;
    return {
        {"a text for the settings", With(",\"settings\":\"none\""), good},
        {"a number for the settings", With(",\"settings\":5"), good},
        {"settings outside of their object",
         With(",\"texture_translation_x\":5,\"texture_wrapping\":\"mirror\""), good},
        {"a text for a number", WithSetting(R"("texture_translation_x":"5")"), good},
        {"nothing for a number, where a new object has 1", WithSetting(R"("texture_repeat_x":null)"),
         good + " columns 0"},
        {"true for a number, where a new object has 1", WithSetting(R"("texture_repeat_y":true)"),
         good + " rows 0"},
        {"a number beyond all", WithSetting(R"("texture_translation_y":1e999)"), kNewObject},
        {"a number with a comma", WithSetting(R"("texture_translation_y":1,5)"), kNewObject},
        {"a number that is none", WithSetting(R"("texture_translation_y":NaN)"), kNewObject},
        {"a number of the smallest size", WithSetting(R"("texture_translation_x":1e-300)"),
         good + " x 1e-300"},
        {"more decimals than are written", WithSetting(R"("texture_rotation_z":12.345678)"),
         good + " turn 12.3457"},
        {"a negative repeat", WithSetting(R"("texture_repeat_x":-3)"), good + " columns -3"},
        {"a wrap mode in capitals", WithSetting(R"("texture_wrapping":"CLAMP_EDGE")"), good},
        {"a wrap mode as its number", WithSetting(R"("texture_wrapping":2)"), good},
        {"a wrap mode with blanks around it", WithSetting(R"("texture_wrapping":" mirror ")"), good},
        {"an empty wrap mode", WithSetting(R"("texture_wrapping":"")"), good},
        {"a wrap mode given twice, the second unknown",
         WithSetting(R"("texture_wrapping":"mirror","texture_wrapping":"sideways")"), good},
        {"a setting's key in capitals", WithSetting(R"("TEXTURE_WRAPPING":"mirror")"), good},
        {"a colour as its number", WithSetting(R"("texture_border_color":5)"), good},
        {"a colour of five digits", WithSetting(R"("texture_border_color":"#12345")"), good},
        {"a colour without its sign", WithSetting(R"("texture_border_color":"ffff0000")"), good},
        {"a colour with a letter that is no digit", WithSetting(R"("texture_border_color":"#ffff00g0")"),
         good},
        {"a colour that nobody knows", WithSetting(R"("texture_border_color":"oak")"), good},
        {"an array of a colour", WithSetting(R"("texture_border_color":[1,0,0,1])"), good},
    };
}

MalformedRows Pictures()
{
    const QByteArray png = Encoded(PlainPicture(2, 1, kBrown), "PNG");
    const std::string none = "no picture 'oak' 'id'";
    const QByteArray text = PictureText();
    return {
        {"no picture", QByteArray("{") + kHeader + '}', none},
        {"an empty picture", WithPicture("\"\""), none},
        {"a number for the picture", WithPicture("7"), none},
        {"an array for the picture", WithPicture("[\"" + text + "\"]"), none},
        {"nothing for the picture", WithPicture("null"), none},
        {"a picture's text that is no base64", WithPicture("\"{}()!?\""), none},
        {"a picture's text that is no picture", WithPictureFile("a picture of oak"), none},
        {"an address in front of the picture's text", WithPicture("\"data:image/png;base64," + text + '"'),
         none},
        {"line ends in the picture's text", WithPicture('"' + QByteArray(text).insert(20, "\\r\\n") + '"'),
         kGood},
        {"letters of no alphabet in the picture's text",
         WithPicture("\"?" + QByteArray(text).insert(9, "\\u00e4") + '"'), kGood},
        {"no padding behind the picture's text", WithPicture('"' + QByteArray(text).replace("=", "") + '"'),
         kGood},
        {"a picture's text that lacks its first letter", WithPicture('"' + text.mid(1) + '"'), none},
        {"a picture cut within its header", WithPictureFile(png.left(20)), none},
        {"a picture of 2^31 pixels a side", WithPictureFile(PNGThatClaims(0x80000000, 0x80000000)), none},
        {"a picture of one pixel more than a side may have", WithPictureFile(PNGThatClaims(32769, 1)), none},
        {"a bitmap of more than 1 GiB", WithPictureFile(BMPThatClaims(32768, 8193)), none},
        {"a picture that is transparent", WithPictureFile([] {
             QImage image(2, 1, QImage::Format_ARGB32);
             image.fill(qRgba(0, 0, 0, 0));
             return Encoded(image, "PNG");
         }()),
         "2x1 ffffff 'oak' 'id'"},
        {"two pictures, the second empty", WithPicture('"' + text + "\",\"image_data\":\"\""), none},
    };
}

} // namespace

// Qt's parser loses an array or object whose key comes a second time; nothing of ours is made in there.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions()
{
    return "leak:libQt5Core";
}

TEST(MalformedTexture, DamagedDocumentsGiveTheirResults)
{
    ExpectResults(Documents(), "oak.texture", Read);
}

TEST(MalformedTexture, DamagedHeadersGiveTheirResults)
{
    ExpectResults(Headers(), "oak.texture", Read);
}

TEST(MalformedTexture, DamagedSettingsGiveTheirResults)
{
    ExpectResults(Settings(), "oak.texture", Read);
}

TEST(MalformedTexture, DamagedPicturesGiveTheirResults)
{
    ExpectResults(Pictures(), "oak.texture", Read);
}

TEST(MalformedTexture, HasItsRows)
{
    ExpectRowCount({Documents(), Headers(), Settings(), Pictures()}, kRowCount);
}
