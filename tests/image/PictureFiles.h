#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include <QByteArray>
#include <QImage>

namespace test {

/// A picture of random colours.
QImage RandomPicture(std::mt19937& random, int width, int height);

/// A picture of these grey levels, row by row.
QImage GreyPicture(int width, const std::vector<int>& levels);

/// The picture as a file of the format, "PNG" for example.
QByteArray Encoded(const QImage& image, const char* format);

/// A picture file whose header alone is good.
QByteArray PNGThatClaims(std::uint32_t width, std::uint32_t height);

enum class Footer { None, OfVersion2 };
/// Without compression, 24 bits a pixel, rows from the bottom.
QByteArray TGA(const QImage& image, Footer footer);

/// Tiles of 8 x 8 pixels side by side, each of one colour: cyan, magenta, yellow and black, 0 to 255 of ink.
struct Ink {
    int cyan, magenta, yellow, black;
};
QByteArray CMYKJPEG(const std::vector<Ink>& tiles);

} // namespace test
