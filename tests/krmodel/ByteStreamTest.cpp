#include "apps/krmodel/ByteStream.h"

#include <QBuffer>
#include <QList>

#include <gtest/gtest.h>

namespace {

QList<QByteArray> Pieces(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    EXPECT_TRUE(buffer.open(QIODevice::ReadOnly));
    QList<QByteArray> pieces;
    // A copy of the bytes: the piece may lie in the block.
    krmodel::VisitPieces(
        buffer, ';', [&](const QByteArray& piece) { pieces << QByteArray(piece.constData(), piece.size()); });
    return pieces;
}

TEST(ByteStream, GivesPiecesWithoutTheirDelimiter)
{
    EXPECT_EQ(Pieces("a;;bc;d"), (QList<QByteArray>{"a", "", "bc", "d"}));
    EXPECT_EQ(Pieces("a;"), QList<QByteArray>{"a"});
    EXPECT_EQ(Pieces(""), QList<QByteArray>());
}

/// A block ends before, in or behind a piece at one of these lengths.
TEST(ByteStream, JoinsWhatABlockDivides)
{
    for (int shift = -6; shift <= 6; ++shift) {
        const QByteArray first((1 << 18) + shift, ';');
        const QList<QByteArray> pieces = Pieces(first + "abc;de");
        ASSERT_EQ(pieces.size(), first.size() + 2) << shift;
        EXPECT_EQ(pieces[pieces.size() - 2], QByteArray("abc")) << shift;
        EXPECT_EQ(pieces.last(), QByteArray("de")) << shift;
    }
}

TEST(ByteStream, KeepsBothEndsOfALongPiece)
{
    for (const int size : {5000, 300'000, 2'000'000}) {
        const QList<QByteArray> pieces = Pieces("begin" + QByteArray(size, ' ') + "end;next");
        ASSERT_EQ(pieces.size(), 2) << size;
        EXPECT_EQ(pieces[0].size(), 4096) << size;
        EXPECT_TRUE(pieces[0].startsWith("begin") && pieces[0].endsWith("end")) << size;
        EXPECT_EQ(pieces[1], QByteArray("next")) << size;
    }
    EXPECT_EQ(Pieces(QByteArray(4096, 'x') + ";")[0].size(), 4096);
}

} // namespace
