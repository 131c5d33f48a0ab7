#pragma once

namespace kr::cad {

/// While one of these lives, on whatever thread, OpenCASCADE's default messenger has no printers. The last
/// one to go gives back those that it had, in front of any that were added meanwhile.
class Silence {
public:
    Silence();
    ~Silence();
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
};

} // namespace kr::cad
