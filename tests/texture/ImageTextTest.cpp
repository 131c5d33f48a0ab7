#include "fileformat/texture/ImageText_p.h"

#include <QByteArray>

#include <sys/mman.h>

#include <gtest/gtest.h>

TEST(ImageText, FileIsStoredAsBase64)
{
    EXPECT_EQ(kr::texture::TextOfFile("file"), QStringLiteral("ZmlsZQ=="));
    EXPECT_EQ(kr::texture::TextOfFile(QByteArray()), QString());
}

TEST(ImageText, TooLongAFileIsNotStored)
{
    // Pages that are never touched: the size alone decides.
    constexpr std::size_t kSize = 750'000'001;
    void* const memory = mmap(nullptr, kSize, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    const QByteArray file = QByteArray::fromRawData(static_cast<const char*>(memory), int(kSize));
    EXPECT_EQ(kr::texture::TextOfFile(file), QString());
    munmap(memory, kSize);
}

TEST(ImageText, NoPictureHasNoText)
{
    EXPECT_EQ(kr::texture::TextOfImage(QImage()), QString());
    EXPECT_TRUE(kr::texture::ImageOfText(QString()).isNull());
}
