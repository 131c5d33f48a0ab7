#pragma once

#include "fileformat/obj/Content_p.h"

class QFile;

namespace kr::obj {

/// Reads an open file from its beginning.
Content ReadText(QFile& file);

} // namespace kr::obj
