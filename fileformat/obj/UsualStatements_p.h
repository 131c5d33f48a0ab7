#pragma once

#include "core/common/ShortNumberText_p.h"
#include "fileformat/obj/Content_p.h"

namespace kr::obj {

/// Reads statements as nearly every program writes them: "v" and "vt" with decimal numbers, "f" with positive
/// indices, and passes over "vn" and comments. Nothing but speed depends on it: what it refuses, the general
/// rules read.
/// @param begin  of whole lines up to @p end, each with its line feed; without carriage returns
/// @param end    kUsualStatementsReadBehind bytes behind it must be readable
/// @return the begin of the first line that is not of that kind, or @p end
const char* ReadUsualStatements(const char* begin, const char* end, Content& content);
constexpr std::size_t kUsualStatementsReadBehind = kReadBehindShortNumber;

} // namespace kr::obj
