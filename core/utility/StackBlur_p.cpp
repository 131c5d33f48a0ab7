#include "core/utility/StackBlur_p.h"

#include <algorithm>
#include <cstring>
#include <vector>

// The weighted sum over p[x - r .. x + r], with the weights r + 1 - |i|, moves from x to x + 1 by adding the
// r + 1 pixels ahead of x and taking off the r + 1 pixels up to x, each with the weight 1:
//
//   weights at x       1  2  3  2  1
//   weights at x + 1      1  2  3  2  1
//   difference        -1 -1 -1 +1 +1 +1      = ahead - behind
//
// Both of these plain sums move by one pixel in and one pixel out, so a step costs the same for every radius.
// Lines are taken in strips: side by side in memory, a step is the same arithmetic on neighbouring bytes,
// which compilers turn into vector instructions. Columns lie so already, rows are transposed.

namespace kr {

namespace {

constexpr std::int64_t kPixelBytes = 4;
constexpr int kMaxRadius = (1 << 28) - 1; // 256 * (r + 1)^2 is 2^64 then, more than any sum
constexpr int kMaxNarrowRadius = 2895;    // (r + 1)^2 stays below 2^23, see NarrowMean
constexpr int kWideStrip = 16;            // pixels: one cache line

// sum / D to the nearest whole number, where D = (radius + 1)^2: floor(n / D) of n = sum + D / 2, by one
// multiplication. Take 2^s < D <= 2^(s + 1) and m = ceil(2^(32 + s) / D), which fits 32 bits. m * D is too
// large by less than D, so n * m / 2^(32 + s) exceeds n / D by less than n / 2^(32 + s). n is less than 256 *
// D; for D <= 2^23 the excess is then below 1 / D, too little to reach the next whole number.
class NarrowMean {
public:
    using Sum = std::uint32_t;

    explicit NarrowMean(int radius)
    {
        const std::uint32_t divisor = static_cast<std::uint32_t>((radius + 1) * (radius + 1));
        while ((divisor - 1) >> m_shift > 1)
            ++m_shift;
        m_half = divisor / 2;
        m_reciprocal =
            static_cast<std::uint32_t>(((std::uint64_t(1) << (32 + m_shift)) + divisor - 1) / divisor);
    }
    std::uint8_t operator()(Sum sum) const
    {
        const std::uint64_t product = std::uint64_t(sum + m_half) * m_reciprocal;
        return static_cast<std::uint8_t>(static_cast<std::uint32_t>(product >> 32) >> m_shift);
    }

private:
    std::uint32_t m_half = 0;
    std::uint32_t m_reciprocal = 0;
    int m_shift = 0;
};

class WideMean {
public:
    using Sum = std::uint64_t;

    explicit WideMean(int radius) : m_divisor(static_cast<Sum>(radius + 1) * static_cast<Sum>(radius + 1)) {}
    std::uint8_t operator()(Sum sum) const
    {
        return static_cast<std::uint8_t>((sum + m_divisor / 2) / m_divisor);
    }

private:
    Sum m_divisor;
};

// Some neighbouring lines: line[i][lane] is byte `lane` of the lines' pixels number i.
template<int Pixels>
struct Strip {
    static constexpr int kLanes = Pixels * static_cast<int>(kPixelBytes);

    explicit Strip(int length) : bytes(static_cast<std::size_t>(length) * kLanes), last(length - 1) {}
    std::uint8_t* At(std::int64_t i) { return bytes.data() + i * kLanes; }
    const std::uint8_t* Clamped(std::int64_t i) const
    {
        return bytes.data() + std::clamp<std::int64_t>(i, 0, last) * kLanes;
    }

    std::vector<std::uint8_t> bytes;
    std::int64_t last;
};

template<int Lanes, class Sum>
void Add(Sum* sums, const std::uint8_t* pixel, std::int64_t weight)
{
    for (int lane = 0; lane < Lanes; ++lane)
        sums[lane] += static_cast<Sum>(weight) * pixel[lane];
}

// The sums of one position of the kernel, for all lanes of a strip.
template<int Pixels, class Sum>
class Window {
    static constexpr int kLanes = Strip<Pixels>::kLanes;
    using Sums = Sum[static_cast<std::size_t>(kLanes)];

public:
    // At the first pixel. What lies beyond the borders is counted at once: the radius may be any.
    Window(const Strip<Pixels>& in, std::int64_t radius) : m_in(in), m_radius(radius)
    {
        const std::int64_t beyond = std::max<std::int64_t>(0, radius - in.last); // pixels behind the last
        Add<kLanes>(m_behind, in.Clamped(0), radius + 1);
        Add<kLanes>(m_weighted, in.Clamped(0), radius * (radius + 1) / 2);
        for (std::int64_t i = 0; i <= std::min(radius, in.last); ++i)
            Add<kLanes>(m_weighted, in.Clamped(i), radius + 1 - i);
        for (std::int64_t i = 1; i <= std::min(radius + 1, in.last); ++i)
            Add<kLanes>(m_ahead, in.Clamped(i), 1);
        Add<kLanes>(m_weighted, in.Clamped(in.last), beyond * (beyond + 1) / 2);
        Add<kLanes>(m_ahead, in.Clamped(in.last), std::max<std::int64_t>(0, radius + 1 - in.last));
    }

    template<class Mean>
    void WriteMeans(Mean mean, std::uint8_t* out) const
    {
        for (int lane = 0; lane < kLanes; ++lane)
            out[lane] = mean(m_weighted[lane]);
    }

    void StepFrom(std::int64_t position)
    {
        const std::uint8_t* leaving = m_in.Clamped(position - m_radius);
        const std::uint8_t* centre = m_in.Clamped(position + 1);
        const std::uint8_t* entering = m_in.Clamped(position + m_radius + 2);
        for (int lane = 0; lane < kLanes; ++lane) {
            m_weighted[lane] += m_ahead[lane] - m_behind[lane];
            m_behind[lane] += static_cast<Sum>(centre[lane]) - leaving[lane];
            m_ahead[lane] += static_cast<Sum>(entering[lane]) - centre[lane];
        }
    }

private:
    const Strip<Pixels>& m_in;
    std::int64_t m_radius;
    Sums m_weighted = {};
    Sums m_behind = {}; // the pixel itself and `radius` before it
    Sums m_ahead = {};  // `radius` + 1 after it
};

template<int Pixels, class Mean>
void BlurStrip(const Strip<Pixels>& in, Strip<Pixels>& out, int radius, Mean mean)
{
    Window<Pixels, typename Mean::Sum> window(in, radius);
    for (std::int64_t i = 0; i <= in.last; ++i) {
        window.WriteMeans(mean, out.At(i));
        window.StepFrom(i);
    }
}

// A picture seen as lines to blur: pixel i of line n lies at i * alongBytes + n * acrossBytes.
struct Lines {
    std::uint8_t* bytes;
    int count;
    int length;
    std::ptrdiff_t alongBytes;
    std::ptrdiff_t acrossBytes;

    std::uint8_t* Pixel(std::int64_t line, std::int64_t i) const
    {
        return bytes + line * acrossBytes + i * alongBytes;
    }
};

// Calls copy(bytes of the picture, bytes of the strip, how many) for the pixels of `used` lines from `first`
// on. Columns lie in the picture as in the strip. Rows go in tiles, so that each cache line is dealt with
// once.
template<int Pixels, class Copy>
void PairPixels(const Lines& lines, int first, int used, Strip<Pixels>& strip, Copy copy)
{
    if (lines.acrossBytes == kPixelBytes) {
        for (int i = 0; i < lines.length; ++i)
            copy(lines.Pixel(first, i), strip.At(i), used * kPixelBytes);
        return;
    }
    for (int tile = 0; tile < lines.length; tile += kWideStrip) {
        const int end = std::min(lines.length - tile, kWideStrip) + tile;
        for (int n = 0; n < used; ++n)
            for (int i = tile; i < end; ++i)
                copy(lines.Pixel(first + n, i), strip.At(i) + n * kPixelBytes, kPixelBytes);
    }
}

void CopyIn(const std::uint8_t* picture, std::uint8_t* strip, std::int64_t bytes)
{
    std::memcpy(strip, picture, static_cast<std::size_t>(bytes));
}

void CopyOut(std::uint8_t* picture, const std::uint8_t* strip, std::int64_t bytes)
{
    std::memcpy(picture, strip, static_cast<std::size_t>(bytes));
}

template<int Pixels, class Mean>
void BlurInStrips(const Lines& lines, int radius, Mean mean)
{
    Strip<Pixels> in(lines.length);
    Strip<Pixels> out(lines.length);
    for (int first = 0; first < lines.count; first += Pixels) {
        const int used = std::min(Pixels, lines.count - first);
        PairPixels(lines, first, used, in, [](auto... of) { CopyIn(of...); });
        BlurStrip(in, out, radius, mean);
        PairPixels(lines, first, used, out, [](auto... of) { CopyOut(of...); });
    }
}

// Few lines are taken one by one: strips of theirs would be mostly empty and could dwarf the picture.
template<class Mean>
void BlurLines(const Lines& lines, int radius, Mean mean)
{
    if (lines.count < kWideStrip)
        BlurInStrips<1>(lines, radius, mean);
    else
        BlurInStrips<kWideStrip>(lines, radius, mean);
}

template<class Mean>
void BlurBothWays(const PixelView& pixels, int radius)
{
    const Mean mean(radius);
    BlurLines({pixels.bytes, pixels.height, pixels.width, kPixelBytes, pixels.bytesPerRow}, radius, mean);
    BlurLines({pixels.bytes, pixels.width, pixels.height, pixels.bytesPerRow, kPixelBytes}, radius, mean);
}

} // namespace

void StackBlur(const PixelView& pixels, int radius)
{
    const int limited = std::min(radius, kMaxRadius);
    if (limited <= kMaxNarrowRadius)
        BlurBothWays<NarrowMean>(pixels, limited);
    else
        BlurBothWays<WideMean>(pixels, limited);
}

} // namespace kr
