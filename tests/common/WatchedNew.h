#pragma once

#include <cstddef>

namespace test {

/// Gets the size of what operator new is asked for, from where in the code, and tells whether there is memory
/// for it. Must not allocate.
using NewWatcher = bool (*)(std::size_t size, const void* caller);

/// Lets every allocation by new, in the program and in its libraries, pass by @p watcher; null lets none. For
/// programs that have WatchedNew.cpp in them.
void WatchNew(NewWatcher watcher);

} // namespace test
