#pragma once

#include "fileformat/obj/Content_p.h"

class QFile;

namespace kr::obj {

/// Empty lists with room for about what the file holds, judged from samples all over it, so that a list
/// seldom has to move while it grows. Only a guess: the lists grow beyond it. Small files make room for
/// nothing.
/// @param file  open; stands at its beginning afterwards
Content MakeRoomFor(QFile& file);

} // namespace kr::obj
