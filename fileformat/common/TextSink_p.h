#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include <QString>
#include <QTextStream>

#include "core/common/DecimalText_p.h"
#include "core/math/Vector3D.h"
#include "fileformat/common/BlockWriter_p.h"

namespace kr {

// Where the text of a model goes, line by line: each sink hands out lines, which take words of ASCII,
// coordinates and indices. Writers are templates over the two sinks.

/// A piece of text of at most BlockWriter::kLargestPiece bytes. Room is asked for once, so that the position
/// stays in a register while the piece is written.
class BlockLine {
public:
    explicit BlockLine(BlockWriter& writer)
        : m_writer(writer), m_position(writer.Reserve(BlockWriter::kLargestPiece))
    {}
    ~BlockLine() { m_writer.Commit(m_position); }
    BlockLine(const BlockLine&) = delete;
    BlockLine& operator=(const BlockLine&) = delete;

    void Words(std::string_view words)
    {
        std::memcpy(m_position, words.data(), words.size());
        m_position += words.size();
    }
    /// The numbers with blanks between them.
    template<class... Floats>
    void Numbers(float first, Floats... others)
    {
        // A copy: what is stored into the block could be m_position itself, as far as the compiler knows.
        char* position = FormatFixed6(m_position, first);
        ((*position = ' ', position = FormatFixed6(position + 1, others)), ...);
        m_position = position;
    }
    void Integer(std::uint64_t value) { m_position = FormatInteger(m_position, value); }

private:
    BlockWriter& m_writer;
    char* m_position;
};

/// Gathers text in a block; coordinates have six decimals.
class BlockText {
public:
    explicit BlockText(BlockWriter& writer) : m_writer(writer) {}
    BlockLine Line() { return BlockLine(m_writer); }

private:
    BlockWriter& m_writer;
};

/// Hands text to a stream of the caller's, whose settings then apply to coordinates, but not to indices.
class StreamText {
public:
    explicit StreamText(QTextStream& stream) : m_stream(stream) {}
    StreamText Line() { return *this; }

    void Words(std::string_view words)
    {
        m_stream << QLatin1String(words.data(), static_cast<int>(words.size()));
    }
    template<class... Floats>
    void Numbers(float first, Floats... others)
    {
        m_stream << first;
        ((m_stream << ' ' << others), ...);
    }
    void Integer(std::uint64_t value)
    {
        char digits[kIntegerCapacity];
        const char* const end = FormatInteger(digits, value);
        Words({digits, static_cast<std::size_t>(end - digits)});
    }

private:
    QTextStream& m_stream;
};

/// The rest of a line that a point ends.
template<class Line>
void EndWithPoint(Line& line, const Vector3D<float>& point)
{
    line.Numbers(point.x, point.y, point.z);
    line.Words("\n");
}

/// One line, or a few, without numbers.
template<class Text>
void WriteWords(Text& text, std::string_view words)
{
    auto line = text.Line();
    line.Words(words);
}

inline Vector3D<float> NormalOf(const Vector3D<float>& a, const Vector3D<float>& b, const Vector3D<float>& c)
{
    Vector3D<float> normal;
    Vector3D<float>::CalcNormal(a, b, c, normal);
    return normal;
}

} // namespace kr
