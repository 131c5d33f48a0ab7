#include "fileformat/stl/STLScanner_p.h"

#include <cctype>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/stl/ByteDevices.h"
#include "tests/stl/STLBuilders.h"

namespace {

using kr::BlockReader;
using kr::LineEnds;
using kr::stl::Probe;
using kr::stl::SolidSearch;
using test::Bytes;
using test::FailingDevice;
using test::kBlockSizes;

QByteArray AllBytes(const QByteArray& bytes, LineEnds lineEnds, std::size_t blockSize)
{
    Bytes device(bytes);
    BlockReader reader(device, lineEnds, blockSize);
    QByteArray read;
    for (int byte = reader.NextByte(); byte >= 0; byte = reader.NextByte())
        read.append(static_cast<char>(byte));
    return read;
}

std::vector<std::string> Tokens(const QByteArray& bytes, std::size_t blockSize, std::size_t capacity = 254)
{
    Bytes device(bytes);
    BlockReader reader(device, LineEnds::AsStored, blockSize);
    std::vector<std::string> tokens;
    std::vector<char> buffer(capacity);
    while (const std::size_t length = kr::stl::ReadToken(reader, buffer.data(), capacity))
        tokens.emplace_back(buffer.data(), length);
    return tokens;
}

SolidSearch Search(const QByteArray& bytes, std::string_view probeBytes = {}, int probeSize = 5)
{
    Bytes device(bytes);
    BlockReader reader(device, LineEnds::AsStored);
    Probe probe(probeBytes);
    return kr::stl::FindSolid(reader, probe, probeSize);
}

} // namespace

TEST(BlockReader, GivesAllBytesAtEveryBlockSize)
{
    QByteArray bytes;
    for (int i = 0; i < 1000; ++i)
        bytes.append(static_cast<char>(i * 7));
    for (const std::size_t blockSize : kBlockSizes)
        EXPECT_EQ(AllBytes(bytes, LineEnds::AsStored, blockSize), bytes) << blockSize;
}

TEST(BlockReader, DropsEveryCarriageReturnWhenAsked)
{
    const QByteArray bytes("\r\ra\r\nb\rc\r\r\r\r\r\r\r\r\r\rd\n\r\r");
    for (const std::size_t blockSize : kBlockSizes) {
        EXPECT_EQ(AllBytes(bytes, LineEnds::WithoutCarriageReturns, blockSize), QByteArray("a\nbcd\n"))
            << blockSize;
        EXPECT_EQ(AllBytes(bytes, LineEnds::AsStored, blockSize), bytes) << blockSize;
    }
}

TEST(BlockReader, DropsCarriageReturnsAsQFileInTextModeDoes)
{
    test::Directory directory;
    const QByteArray bytes("so\rlid\r\n\rx\r\r\ny\n\r");
    QFile file(directory.Write(bytes));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    EXPECT_EQ(AllBytes(bytes, LineEnds::WithoutCarriageReturns, 64), file.readAll());
}

TEST(BlockReader, StaysAtTheEnd)
{
    Bytes device("a");
    BlockReader reader(device, LineEnds::AsStored, 4);
    EXPECT_EQ(reader.NextByte(), 'a');
    EXPECT_EQ(reader.NextByte(), kr::kEndOfInput);
    EXPECT_EQ(reader.NextByte(), kr::kEndOfInput);
}

TEST(BlockReader, TellsAFailureFromTheEnd)
{
    FailingDevice device("a");
    BlockReader reader(device, LineEnds::AsStored, 4);
    EXPECT_EQ(reader.NextByte(), 'a');
    EXPECT_EQ(reader.NextByte(), kr::kReadFailed);
    EXPECT_EQ(reader.NextByte(), kr::kReadFailed);
}

TEST(BlockReader, LendsTheBytesAtHandAndSkipsWithinThem)
{
    Bytes device("abcdef");
    BlockReader reader(device, LineEnds::AsStored, 4);
    EXPECT_EQ(reader.Buffered(), "");
    EXPECT_EQ(reader.NextByte(), 'a');
    EXPECT_EQ(reader.Buffered(), "bcd");
    reader.SkipTo(reader.Buffered().data() + 2);
    EXPECT_EQ(reader.NextByte(), 'd');
    const std::size_t block = reader.BlockNumber();
    EXPECT_EQ(reader.NextByte(), 'e');
    EXPECT_NE(reader.BlockNumber(), block);
}

TEST(BlockReader, CopiesPiecesOfEverySize)
{
    QByteArray bytes;
    for (int i = 0; i < 1000; ++i)
        bytes.append(static_cast<char>(i * 7));
    for (const std::size_t blockSize : kBlockSizes)
        for (const int size : {1, 3, 7, 64, 65, 500, 1000}) {
            Bytes device(bytes);
            BlockReader reader(device, LineEnds::AsStored, blockSize);
            QByteArray piece(size, '\0');
            int position = 0;
            for (; position + size <= bytes.size(); position += size) {
                ASSERT_TRUE(reader.Read(piece.data(), static_cast<std::size_t>(size)));
                ASSERT_EQ(piece, bytes.mid(position, size)) << blockSize;
            }
            EXPECT_FALSE(reader.Read(piece.data(), static_cast<std::size_t>(bytes.size() - position) + 1));
        }
}

TEST(BlockReader, CopiesBetweenSingleBytes)
{
    Bytes device("abcdefghijkl");
    BlockReader reader(device, LineEnds::AsStored, 4);
    QByteArray piece(6, '\0');
    EXPECT_EQ(reader.NextByte(), 'a');
    EXPECT_TRUE(reader.Read(piece.data(), 2));
    EXPECT_EQ(piece.left(2), "bc");
    EXPECT_TRUE(reader.Read(piece.data(), 6)) << "one byte at hand, a block and one byte behind";
    EXPECT_EQ(piece, "defghi");
    EXPECT_EQ(reader.NextByte(), 'j');
    EXPECT_TRUE(reader.Read(piece.data(), 0));
    EXPECT_FALSE(reader.Read(piece.data(), 3));
    EXPECT_EQ(reader.NextByte(), kr::kEndOfInput);
}

TEST(BlockReader, CopiesNothingBehindAFailure)
{
    for (const std::size_t size : {2U, 3U, 5U, 9U}) {
        FailingDevice device("a");
        BlockReader reader(device, LineEnds::AsStored, 4);
        QByteArray piece(9, '\0');
        EXPECT_FALSE(reader.Read(piece.data(), size));
    }
}

TEST(STLScanner, TakesLettersDigitsMinusPointAndPlusIntoTokens)
{
    for (int byte = 0; byte < 256; ++byte) {
        const bool expected = byte < 128 && (std::isalnum(byte) || byte == '-' || byte == '.' || byte == '+');
        EXPECT_EQ(kr::stl::IsTokenByte(byte), expected) << byte;
    }
    EXPECT_FALSE(kr::stl::IsTokenByte(kr::kEndOfInput));
}

TEST(STLScanner, TakesSixBytesForWhiteSpace)
{
    for (int byte = 0; byte < 256; ++byte)
        EXPECT_EQ(kr::stl::IsWhiteSpace(byte), byte < 128 && std::isspace(byte) != 0) << byte;
}

TEST(STLScanner, SplitsTokensAtEveryOtherByte)
{
    const QByteArray bytes = QByteArray(" \tvertex,1.5e+01/-2\0+3_x\xe9y\n", 27);
    const std::vector<std::string> expected = {"vertex", "1.5e+01", "-2", "+3", "x", "y"};
    for (const std::size_t blockSize : kBlockSizes)
        EXPECT_EQ(Tokens(bytes, blockSize), expected) << blockSize;
}

TEST(STLScanner, LosesTheByteBehindAToken)
{
    Bytes device("ab,;c");
    BlockReader reader(device, LineEnds::AsStored, 64);
    char buffer[8];
    EXPECT_EQ(kr::stl::ReadToken(reader, buffer, sizeof buffer), 2U);
    EXPECT_EQ(reader.Buffered(), ";c");
}

TEST(STLScanner, ReadsLongTokensWholeAndKeepsTheirBeginning)
{
    const std::vector<std::string> expected = {std::string(254, 'a'), "b"};
    for (const std::size_t blockSize : kBlockSizes) {
        EXPECT_EQ(Tokens(QByteArray(254, 'a') + " b", blockSize), expected);
        EXPECT_EQ(Tokens(QByteArray(255, 'a') + " b", blockSize), expected);
        EXPECT_EQ(Tokens(QByteArray(100000, 'a') + " b", blockSize), expected);
    }
}

TEST(STLScanner, EndsTokensAtTheEndOfTheInputAndAtAFailure)
{
    EXPECT_EQ(Tokens("abc", 2), std::vector<std::string>{"abc"});
    FailingDevice device("abc");
    BlockReader reader(device, LineEnds::AsStored, 2);
    char buffer[8];
    EXPECT_EQ(kr::stl::ReadToken(reader, buffer, sizeof buffer), 3U);
    EXPECT_EQ(kr::stl::ReadToken(reader, buffer, sizeof buffer), 0U);
}

TEST(STLScanner, FindsSolidInAnyCase)
{
    EXPECT_EQ(Search("solid"), SolidSearch::Found);
    EXPECT_EQ(Search("  SoLiD"), SolidSearch::Found);
    EXPECT_EQ(Search("xx\nsolid"), SolidSearch::Found);
}

TEST(STLScanner, FindsSolidWithinOtherBytes)
{
    EXPECT_EQ(Search("xxsolid"), SolidSearch::Found);
    EXPECT_EQ(Search("sosolid"), SolidSearch::Found);
    EXPECT_EQ(Search(QByteArray("\0\xff\x01solid", 8)), SolidSearch::Found);
}

TEST(STLScanner, WhiteSpaceSplitsTheWord)
{
    for (const char* text : {"so lid", "soli\td", "s\nolid", "sol\rid", "soli\vd", "soli\fd"})
        EXPECT_EQ(Search(text), SolidSearch::NotFound) << text;
}

TEST(STLScanner, ContinuesTheProbeThatItIsGiven)
{
    EXPECT_EQ(Search("d", "xsoli"), SolidSearch::Found);
    EXPECT_EQ(Search("id", " xsol"), SolidSearch::Found);
    EXPECT_EQ(Search("d", "soli"), SolidSearch::Found);
    // The probe itself is not compared, nor is one with fewer bytes than asked for.
    EXPECT_EQ(Search("", "solid"), SolidSearch::NotFound);
    EXPECT_EQ(Search("x", "solid"), SolidSearch::NotFound);
    EXPECT_EQ(Search("solid", "", 6), SolidSearch::NotFound);
    // One byte is dropped at a time: a probe that begins too long stays so.
    EXPECT_EQ(Search("solid", "1234567"), SolidSearch::NotFound);
    EXPECT_EQ(Search(" solid", "1234567"), SolidSearch::Found);
    EXPECT_EQ(Search("d", "xsoli", 4), SolidSearch::Found);
}

TEST(STLScanner, GivesUpAfter10240BytesInVain)
{
    const QByteArray inVain(10240 - 4, 'x');
    EXPECT_EQ(Search(inVain + "solid"), SolidSearch::Found);
    EXPECT_EQ(Search(inVain + "xsolid"), SolidSearch::NotFound);
}

TEST(STLScanner, WhiteSpaceIsSearchedForNothing)
{
    const QByteArray inVain(10240 - 4, 'x');
    EXPECT_EQ(Search(QByteArray(50000, ' ') + inVain + QByteArray(50000, '\n') + "solid"),
              SolidSearch::Found);
}

TEST(STLScanner, TellsAFailedSearchFromAVainOne)
{
    EXPECT_EQ(Search("abc"), SolidSearch::NotFound);
    FailingDevice device("abc");
    BlockReader reader(device, LineEnds::AsStored, 2);
    Probe probe;
    EXPECT_EQ(kr::stl::FindSolid(reader, probe, 5), SolidSearch::ReadFailed);
    EXPECT_EQ(probe.Bytes(), "abc");
}
