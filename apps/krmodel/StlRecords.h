#pragma once

#include <optional>

#include <QFile>
#include <QtEndian>

/// How a binary STL file lies on disk: 80 bytes, a count of 32 bits, and records of 50 bytes (normal, three
/// corners, attribute word), all little-endian.
namespace krmodel::stl {

constexpr int kHeaderSize = 80;
constexpr qint64 kCountEnd = kHeaderSize + 4;
constexpr qint64 kRecordSize = 50;
constexpr qint64 kCornerPlace = 12;
constexpr qint64 kAttributePlace = 48;

/// What the file declares; nothing for a file too short for a count.
inline std::optional<qint64> DeclaredFacets(QFile& file)
{
    char count[4];
    if (!file.seek(kHeaderSize) || file.read(count, sizeof count) != qint64(sizeof count))
        return std::nullopt;
    return qFromLittleEndian<quint32>(count);
}

/// Calls @p visit with the start of each whole record, a bounded number of which is in memory at a time.
/// False when a piece of one follows the last.
template<class Visit>
bool VisitRecords(QFile& file, const Visit& visit)
{
    constexpr qint64 kRecordsAtOnce = 8192;
    if (!file.seek(kCountEnd))
        return false;
    QByteArray records = file.read(kRecordsAtOnce * kRecordSize);
    for (; records.size() >= kRecordSize; records = file.read(kRecordsAtOnce * kRecordSize)) {
        const qint64 wholeRecords = records.size() / kRecordSize;
        for (qint64 record = 0; record < wholeRecords; ++record)
            visit(records.constData() + record * kRecordSize);
        if (records.size() % kRecordSize != 0)
            return false;
    }
    return records.isEmpty();
}

} // namespace krmodel::stl
