#pragma once

#include <cstdint>

namespace kr {

/// A number drawn once a process, to start hashes of file content from: a file cannot be made to collide on
/// purpose. No result depends on it, only the order in which a table is filled.
std::uint64_t HashSeed();

} // namespace kr
