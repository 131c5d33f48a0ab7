#pragma once

namespace test {

/// As long as this lives, gettimeofday(), clock_gettime() and time() tell one moment of 2021: files that hold
/// the time of their making can be compared. For programs that have StoppedClock.cpp in them.
class StoppedClock {
public:
    StoppedClock();
    ~StoppedClock();
    StoppedClock(const StoppedClock&) = delete;
    StoppedClock& operator=(const StoppedClock&) = delete;
};

} // namespace test
