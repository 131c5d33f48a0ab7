#pragma once

#include <Eigen/Core>
#include <QRgb>

/// What the pictures that the program draws have in common.
namespace krmodel {

using Colour = Eigen::Array3f; ///< red, green, blue; proportional to light, 0..1

using Sample =
    Eigen::Array4f; ///< red, green and blue as far as they cover what is behind, and how far that is

/// The background becomes darker downwards.
inline const Colour kBackgroundTop(0.93F, 0.945F, 0.96F);
inline const Colour kBackgroundBottom(0.68F, 0.71F, 0.75F);

/// What is behind a model.
struct Background {
    Colour top = kBackgroundTop;
    Colour bottom = kBackgroundBottom;
    bool isTransparent = false; ///< there is nothing, and shadows darken what the picture is laid on
};

/// Of what has no colour of its own.
inline const Colour kOwnColour(0.17F, 0.37F, 0.60F);

/// A part of light as pictures hold it (sRGB), 0..255.
int EncodedPart(float light);
QRgb Encoded(const Colour& light);
/// The inverse of EncodedPart(), for parts of 0..1.
float DecodedPart(float part);
Colour Decoded(QRgb colour);

} // namespace krmodel
