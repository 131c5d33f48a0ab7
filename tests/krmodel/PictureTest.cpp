#include "apps/krmodel/Picture.h"

#include <gtest/gtest.h>

#include "tests/common/PictureFiles.h"

namespace {

using krmodel::DecodePicture;
using krmodel::EncodePng;
using krmodel::IsPng;
using krmodel::PictureSize;
using test::Encoded;
using test::PNGThatClaims;

QImage Plain()
{
    return test::PlainPicture(6, 4, qRgb(10, 200, 30));
}

TEST(Picture, DecodesPngAndJpeg)
{
    for (const char* format : {"PNG", "JPG"}) {
        const QByteArray bytes = Encoded(Plain(), format);
        EXPECT_EQ(PictureSize(bytes), QSize(6, 4)) << format;
        EXPECT_EQ(DecodePicture(bytes).size(), QSize(6, 4)) << format;
        EXPECT_EQ(IsPng(bytes), *format == 'P');
    }
    EXPECT_EQ(DecodePicture(EncodePng(Plain())).pixel(3, 2), qRgb(10, 200, 30));
}

TEST(Picture, KnowsNoOtherFormat)
{
    for (const QByteArray& bytes :
         {Encoded(Plain(), "BMP"), Encoded(Plain(), "PPM"), QByteArray("<svg width='9' height='9'/>"),
          QByteArray("text"), QByteArray()}) {
        EXPECT_TRUE(PictureSize(bytes).isEmpty()) << bytes.left(10).toStdString();
        EXPECT_TRUE(DecodePicture(bytes).isNull()) << bytes.left(10).toStdString();
    }
}

TEST(Picture, RefusesMorePixelsThanAThumbnailHas)
{
    EXPECT_EQ(PictureSize(PNGThatClaims(4096, 4096)), QSize(4096, 4096));
    EXPECT_TRUE(PictureSize(PNGThatClaims(4096, 4097)).isEmpty());
    EXPECT_TRUE(PictureSize(PNGThatClaims(2'000'000'000, 2'000'000'000)).isEmpty());
    EXPECT_TRUE(DecodePicture(PNGThatClaims(30'000, 30'000)).isNull());
}

TEST(Picture, IsNullWhenCutShort)
{
    EXPECT_TRUE(DecodePicture(EncodePng(Plain()).left(40)).isNull());
}

} // namespace
