#pragma once

#include <vector>

#include <QByteArray>

#include "core/math/TriangleFace.h"
#include "core/math/Vector3D.h"

class QXmlStreamReader;

namespace kr::package3mf {

/// A row of elements of one kind that follow each other with nothing but white space between them.
struct ElementRow {
    std::vector<Vector3D<float>> vertices;
    std::vector<TriangleFace> faces;
};

/// The long rows of plain "vertex" and "triangle" elements of a model part, read already, and the document
/// that remains without them: a general XML reader takes ten times as long for them as all other work does.
///
/// The first two elements of a row stay in the document; behind them stands a processing instruction for what
/// was set aside. So the rest of a row is where the XML reader accepts two elements after another, or the
/// reader never gets there: whether the document is well-formed, and where it ceases to be, is up to that
/// reader alone. Documents in other encodings than UTF-8, and with CDATA, a document type or processing
/// instructions, stay as they are.
class SetAsideElements {
public:
    /// Sets nothing aside.
    SetAsideElements() = default;
    /// @param document  a model part; kept and shared
    explicit SetAsideElements(const QByteArray& document);

    const QByteArray& Remainder() const { return m_remainder; }

    /// Takes the row for which the reader's current token, a processing instruction, stands; null for any
    /// other.
    ElementRow* Take(const QXmlStreamReader& reader);

    /// So many elements of each row stay in the remainder, and stand first in the row too.
    static constexpr std::size_t kStaying = 2;

private:
    class Splitter;

    QByteArray m_remainder;
    std::vector<ElementRow> m_rows;
};

} // namespace kr::package3mf
