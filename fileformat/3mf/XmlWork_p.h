#pragma once

#include <limits>
#include <vector>

#include <QByteArray>
#include <QXmlStreamReader>

namespace kr::package3mf {

/// Stops Qt's XML reader where a document keeps it busy out of all proportion to its size: it compares each
/// attribute of a tag with each other, looks for a prefix among all that are declared, and puts what a
/// document type declares into the document again and again, so that a few kilobytes can take hours. No
/// program has a reason to write such documents.
///
/// Work is counted in comparisons of two attributes, of which the reader does some 300 million a second.
class XmlWork {
public:
    static constexpr qint64 kUsual = qint64(1) << 30;
    /// For a host that drives the reader itself; without Begin().
    static constexpr qint64 kUnlimited = std::numeric_limits<qint64>::max();

    /// @param allowed  for all documents together, besides 4 for each byte of a document
    explicit XmlWork(qint64 allowed = kUsual) : m_left(allowed) {}

    /// Begins a document.
    /// @return false when a single token could take so long that nothing would stop the reader in time:
    ///     - a tag of more than 20,000 attributes;
    ///     - a document type of more than some 230,000 characters, by the attributes that it may declare. A
    ///       percent sign makes all that follows a part of it, and may stand for all of it, up to the 4,096
    ///       characters that Qt puts in its place at most;
    ///     - references ("&") behind a document type to more than some 270 million characters, each counted
    ///       like a percent sign;
    ///     - a declaration of many encodings, for each of which the reader decodes all again.
    [[nodiscard]] bool Begin(const QByteArray& document);

    /// Reads the next token, as QXmlStreamReader::readNext() does. When that was too much, the reader has an
    /// error and is at its end.
    QXmlStreamReader::TokenType ReadNext(QXmlStreamReader& reader);

private:
    qint64 WorkOfTag(const QXmlStreamReader& reader);
    qint64 WorkOfDeclared(const QXmlStreamReader& reader) const;

    qint64 m_left;
    qint64 m_documentTypeSize = 0;
    qint64 m_declarationCount = 0;        // of namespaces, by all elements that are open
    std::vector<int> m_declarationCounts; // by each of them
};

} // namespace kr::package3mf
