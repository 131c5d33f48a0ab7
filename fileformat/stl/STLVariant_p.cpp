#include "fileformat/stl/STLVariant_p.h"

#include "core/common/AsciiText_p.h"
#include "fileformat/common/BlockReader_p.h"
#include "fileformat/stl/STLScanner_p.h"

namespace kr::stl {

// A byte-order mark needs no rule of its own: it stands in front of "solid", where any bytes may, and on the
// first line, which is passed over.
Variant FindVariant(QIODevice& device)
{
    // The search seldom goes further than its limit.
    BlockReader source(device, LineEnds::AsStored, kSolidSearchLimit + 2 * kSolid.size());
    char beginning[kSolid.size()];
    for (char& character : beginning) {
        const int byte = source.NextByte();
        if (byte < 0)
            return Variant::Unreadable;
        character = static_cast<char>(byte);
    }
    Probe probe({beginning, sizeof beginning});
    if (EqualsIgnoringCase(probe.Bytes(), kSolid))
        return Variant::Text;
    switch (FindSolid(source, probe, sizeof beginning)) {
    case SolidSearch::Found:
        return Variant::Text;
    case SolidSearch::NotFound:
        return Variant::Binary;
    case SolidSearch::ReadFailed:
        break;
    }
    return Variant::Unreadable;
}

} // namespace kr::stl
