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

/// The same from a seed.
QImage RandomPicture(int width, int height, unsigned seed = 1);

/// 2 x 2 pixels, red green above blue white.
QImage FourColors();

/// A picture of one colour.
QImage PlainPicture(int width, int height, QRgb color);

/// The picture as a file of the format, "PNG" for example.
/// @param quality  from 0 to 100, which loses least; -1: the usual one of the format
QByteArray Encoded(const QImage& image, const char* format, int quality = -1);

/// Four bytes, the highest first.
QByteArray BigEndian(std::uint32_t number);

/// A chunk of a PNG file, from its length to its check sum. @param typeAndData  its four letters come first
QByteArray PNGChunk(const QByteArray& typeAndData);

/// A picture file whose header alone is good.
QByteArray PNGThatClaims(std::uint32_t width, std::uint32_t height);

/// A bitmap file of 2 x 2 pixels, 32 bits each, whose header says another size.
QByteArray BMPThatClaims(int width, int height);

/// The bitmap file with its rows counted from the top, which turns the picture upside down.
QByteArray WithRowsFromTheTop(const QByteArray& bmp);

/// The bytes without the last quarter.
QByteArray CutShort(const QByteArray& bytes);

/// An icon of pictures that are PNG files, each 16 x 16 pixels as the icon's directory says.
QByteArray IconOf(const std::vector<QByteArray>& pngs);

enum class Footer { None, OfVersion2 };
/// Without compression, 24 bits a pixel, rows from the bottom.
QByteArray TGA(const QImage& image, Footer footer);

/// Tiles of 8 x 8 pixels side by side, each of one colour: cyan, magenta, yellow and black, 0 to 255 of ink.
struct Ink {
    int cyan, magenta, yellow, black;
};
QByteArray CMYKJPEG(const std::vector<Ink>& tiles);

} // namespace test
