#pragma once

#include <QString>

namespace bench {

/// The side of the picture that reliefs are made of, in pixels.
constexpr int kReliefSide = 2048;

/// The path of that picture: a PNG file of hills.
QString PictureOfHills();

} // namespace bench
