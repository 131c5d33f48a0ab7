#pragma once

#include <Eigen/Core>
#include <QRgb>

/// What the pictures that the program draws have in common.
namespace krmodel {

using Colour = Eigen::Array3f; ///< red, green, blue; proportional to light, 0..1

/// The background becomes darker downwards.
inline const Colour kBackgroundTop(0.93F, 0.945F, 0.96F);
inline const Colour kBackgroundBottom(0.68F, 0.71F, 0.75F);

/// Of what has no colour of its own.
inline const Colour kOwnColour(0.17F, 0.37F, 0.60F);

/// A part of light as pictures hold it (sRGB), 0..255.
int EncodedPart(float light);
QRgb Encoded(const Colour& light);

} // namespace krmodel
