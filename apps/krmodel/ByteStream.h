#pragma once

#include <QByteArray>
#include <QIODevice>

namespace krmodel {

/// Leaves out the middle of a piece that is too long: what it is stands at its beginning, how it ends at its
/// end.
inline void Shorten(QByteArray& piece)
{
    constexpr int kLongestPiece = 4096;
    constexpr int kKeptBeginning = 4000;
    if (piece.size() > kLongestPiece)
        piece.remove(kKeptBeginning, piece.size() - kLongestPiece);
}

/// Calls @p visit with each piece of @p device that ends with @p delimiter, without it, and with what stands
/// behind the last one. Pieces are shortened to 4096 bytes, and the device is read in blocks: nothing grows.
template<class Visit>
void VisitPieces(QIODevice& device, char delimiter, const Visit& visit)
{
    constexpr qint64 kBlockSize = 1 << 18;
    QByteArray begun;
    for (QByteArray block = device.read(kBlockSize); !block.isEmpty(); block = device.read(kBlockSize)) {
        int from = 0;
        for (int end = block.indexOf(delimiter); end >= 0; end = block.indexOf(delimiter, from)) {
            // Copied only where it must be: the piece goes on from another block, or is too long.
            QByteArray piece = begun.isEmpty() ? QByteArray::fromRawData(block.constData() + from, end - from)
                                               : begun + block.mid(from, end - from);
            Shorten(piece);
            visit(piece);
            begun.clear();
            from = end + 1;
        }
        begun += block.mid(from);
        Shorten(begun);
    }
    if (!begun.isEmpty())
        visit(begun);
}

} // namespace krmodel
