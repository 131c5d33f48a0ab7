#include <new>

#include <gtest/gtest.h>

#include "fileformat/3mf/DocumentDevice_p.h"

using kr::package3mf::DocumentDevice;

TEST(DocumentDevice, GrowsAsFarAsItIsWritten)
{
    DocumentDevice device(0, 1'000'000);
    QByteArray expected;
    for (int i = 0; i < 1000; ++i) {
        const QByteArray piece(i % 97, static_cast<char>('a' + i % 26));
        EXPECT_EQ(device.write(piece), piece.size());
        expected += piece;
    }
    EXPECT_EQ(device.Take(), expected);
}

TEST(DocumentDevice, TakesWhatIsPutIntoItsRoom)
{
    DocumentDevice device(3, 100);
    device.write("abc");
    char* const room = device.Reserve(10);
    room[0] = 'd';
    device.Commit(room + 1);
    device.write("e");
    EXPECT_EQ(device.Take(), QByteArray("abcde"));
}

TEST(DocumentDevice, BeginsAnewWhenItsDocumentIsTaken)
{
    DocumentDevice device(10, 100);
    device.write("first");
    const QByteArray first = device.Take();
    device.write("second");
    EXPECT_EQ(device.Take(), QByteArray("second"));
    EXPECT_EQ(first, QByteArray("first"));
    EXPECT_EQ(device.Take(), QByteArray());
}

TEST(DocumentDevice, ThrowsInsteadOfGrowingTooLarge)
{
    DocumentDevice device(50, 100);
    device.write(QByteArray(90, 'x'));
    EXPECT_EQ(device.write(QByteArray(10, 'y')), 10);
    EXPECT_THROW(device.Reserve(1), std::bad_alloc);
    EXPECT_EQ(device.Take(), QByteArray(90, 'x') + QByteArray(10, 'y'));
}

TEST(DocumentDevice, ExpectsNoMoreThanItsLargestSize)
{
    DocumentDevice device(1'000'000'000'000, 100);
    device.write("text");
    EXPECT_EQ(device.Take(), QByteArray("text"));
}
