#pragma once

#include <string>

#include <QString>

#include "core/mesh/MeshMaterialParameters.h"

/// What texture files say, in words.
namespace krmodel {

/// Where the picture lies in the document.
inline constexpr char kImageDataKey[] = "image_data";

/// The names are those that the file has.
struct Wrap {
    const char* name;
    int mode;
};

/// By their modes; the first one is the default.
inline constexpr Wrap kWraps[] = {
    {"repeat", MeshMaterialParameters::Repeat},
    {"mirror", MeshMaterialParameters::Mirror},
    {"clamp_edge", MeshMaterialParameters::ClampToEdge},
    {"clamp_border", MeshMaterialParameters::ClampToBorder},
};

/// Null for none of them.
const Wrap* FindWrap(const std::string& name);
std::string AllWrapNames();

/// "#ff8000ff": alpha, red, green, blue, as in the file.
QString ColourText(const Vector4D<float>& colour);

/// What the file keeps of three numbers: "0.5 0".
QString PairText(const Vector3D<double>& numbers);

} // namespace krmodel
