#pragma once

#include <cstddef>
#include <cstdint>

namespace kr {

/// Pixels of four bytes each, rows from the top; not owned.
struct PixelView {
    std::uint8_t* bytes = nullptr;
    int width = 0;
    int height = 0;
    std::ptrdiff_t bytesPerRow = 0;
};

/// Blurs every byte of the pixels with those at its place in the other pixels, by the kernel that
/// ImageTool::StackBlur() describes.
/// @param radius  at least 1
void StackBlur(const PixelView& pixels, int radius);

} // namespace kr
