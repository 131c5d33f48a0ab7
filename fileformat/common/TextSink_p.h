#pragma once

#include <string_view>

#include <QString>
#include <QTextStream>

#include "core/common/DecimalText_p.h"
#include "fileformat/common/BlockWriter_p.h"

namespace kr {

// Where the text of a model goes: words of ASCII and coordinates. Writers are templates over the two.

/// Gathers text in a block; coordinates have six decimals.
class BlockText {
public:
    explicit BlockText(BlockWriter& writer) : m_writer(writer) {}

    void Words(std::string_view words) { m_writer.Append(words); }
    void Number(float value) { m_writer.Commit(FormatFixed6(m_writer.Reserve(kFixed6Capacity), value)); }

private:
    BlockWriter& m_writer;
};

/// Hands text to a stream of the caller's, whose settings then apply to coordinates.
class StreamText {
public:
    explicit StreamText(QTextStream& stream) : m_stream(stream) {}

    void Words(std::string_view words)
    {
        m_stream << QLatin1String(words.data(), static_cast<int>(words.size()));
    }
    void Number(float value) { m_stream << value; }

private:
    QTextStream& m_stream;
};

} // namespace kr
