#pragma once

#include <malloc.h>

namespace test {

/// As long as this lives, memory that is allocated holds a pattern instead of, mostly, zeros.
class DirtyMemory {
public:
    DirtyMemory() { mallopt(M_PERTURB, 0x5a); }
    ~DirtyMemory() { mallopt(M_PERTURB, 0); }
    DirtyMemory(const DirtyMemory&) = delete;
    DirtyMemory& operator=(const DirtyMemory&) = delete;
};

} // namespace test
