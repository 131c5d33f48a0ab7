#pragma once

#include <QByteArray>
#include <QIODevice>

namespace kr::package3mf {

/// A document that grows in memory. An XML writer writes into it as into any device; long rows of elements
/// are put into it directly.
class DocumentDevice : public QIODevice {
public:
    /// @param expected  size of the document in bytes; there is room for so much from the beginning
    /// @param largest   the same, and no document grows beyond it
    DocumentDevice(qint64 expected, int largest);

    /// Room for @p size bytes, to be filled from the returned position on and then taken in with Commit().
    /// @throws std::bad_alloc when memory runs out or the document would become too large
    char* Reserve(qint64 size)
    {
        if (m_limit - m_position < size)
            Grow(size);
        return m_position;
    }
    /// @param position  behind the last byte that was filled
    void Commit(char* position) { m_position = position; }

    /// Hands the document over and begins a new one.
    QByteArray Take();

protected:
    qint64 readData(char* data, qint64 size) override;
    qint64 writeData(const char* data, qint64 size) override;

private:
    int Size() const { return static_cast<int>(m_position - m_bytes.constData()); }
    void Grow(qint64 size);

    QByteArray m_bytes; // as large as there is room
    char* m_position;
    char* m_limit;
    int m_largest;
};

} // namespace kr::package3mf
