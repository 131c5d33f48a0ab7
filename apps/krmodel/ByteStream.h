#pragma once

#include <QByteArray>
#include <QIODevice>

namespace krmodel {

/// Calls @p visit with each piece of @p device that ends with @p delimiter, without it, and with what stands
/// behind the last one. Of a piece of more than 4096 bytes only the first are seen: nothing grows.
template<class Visit>
void VisitPieces(QIODevice& device, char delimiter, const Visit& visit)
{
    constexpr qint64 kBlockSize = 1 << 18;
    constexpr int kLongestPiece = 4096;
    QByteArray begun;
    const auto append = [&](const QByteArray& block, int from, int size) {
        begun.append(block.constData() + from, std::min(size, kLongestPiece - begun.size()));
    };
    for (QByteArray block = device.read(kBlockSize); !block.isEmpty(); block = device.read(kBlockSize)) {
        int from = 0;
        for (int end = block.indexOf(delimiter); end >= 0; end = block.indexOf(delimiter, from)) {
            if (begun.isEmpty()) {
                visit(QByteArray::fromRawData(block.constData() + from, std::min(end - from, kLongestPiece)));
            } else {
                append(block, from, end - from);
                visit(begun);
                begun.clear();
            }
            from = end + 1;
        }
        append(block, from, block.size() - from);
    }
    if (!begun.isEmpty())
        visit(begun);
}

} // namespace krmodel
