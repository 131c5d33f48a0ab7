#include "fileformat/stl/STLVariant_p.h"

#include <gtest/gtest.h>

#include "tests/stl/ByteDevices.h"

// What the public operations cannot show: a device that fails on the way. See STLDetectionTest.cpp for files.

namespace {

using kr::stl::FindVariant;
using kr::stl::Variant;
using test::Bytes;
using test::FailingDevice;

} // namespace

TEST(STLVariant, OfAFileWhoseSearchFailsIsUnknown)
{
    for (const char* const bytes : {"abcde", "abcde fgh", "abcde soli"}) {
        Bytes whole(bytes);
        EXPECT_EQ(FindVariant(whole), Variant::Binary) << bytes;
        FailingDevice failing(bytes);
        EXPECT_EQ(FindVariant(failing), Variant::Unreadable) << bytes;
    }
}

TEST(STLVariant, OfAFileThatFailsBehindTheWordIsText)
{
    for (const char* const bytes : {"SoLiD", "abcde solid"}) {
        FailingDevice failing(bytes);
        EXPECT_EQ(FindVariant(failing), Variant::Text) << bytes;
    }
}

TEST(STLVariant, OfFewerThanFiveBytesIsUnknown)
{
    Bytes four("soli");
    EXPECT_EQ(FindVariant(four), Variant::Unreadable);
    FailingDevice failing("soli");
    EXPECT_EQ(FindVariant(failing), Variant::Unreadable);
}
