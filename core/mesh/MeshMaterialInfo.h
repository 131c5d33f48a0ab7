#pragma once

#include <string>

#include "core/math/Matrix4.h"
#include "core/math/Vector3D.h"
#include "core/math/Vector4D.h"
#include "core/mesh/KRCoreMeshExport.h"
#include "core/mesh/MeshTextureInfo.h"

/// One material. Plain value; colours are r, g, b, 0..1 as a rule, and kept as they are set.
///
/// The defaults are what a material library means that says nothing: grey of 0.2 in the ambient and 0.8 in
/// the diffuse light, opaque, no emission. Highlights are on (illum 2) and black, so that the colour of the
/// highlight is all that a library needs to name.
struct KRCORE_MESH_EXPORT MeshMaterialInfo {
    /// @{
    /// Whether the colour was set through its setter, rather than being the default.
    bool hasAmbient = false;
    bool hasDiffuse = false;
    bool hasSpecular = false;
    bool hasEmissive = false;
    /// @}

    int texCoordSet = 0; ///< the set of texture coordinates that the textures use; a mesh has one, number 0

    int illum = 2; ///< illumination model: 0 colour, 1 with ambient light, 2 with highlights, ...
    float specularExponent = 0; ///< 0..1000, the higher the smaller the highlight
    float refractionIndex = 1;  ///< 1 does not bend light
    float opacity = 1;          ///< 0 transparent, 1 opaque

    /// Under light from everywhere.
    Vector3D<float> ambient = {0.2f, 0.2f, 0.2f};
    /// Under light from one side, as the surface is turned to it.
    Vector3D<float> diffuse = {0.8f, 0.8f, 0.8f};
    Vector3D<float> specular; ///< of the highlight
    Vector3D<float> emissive; ///< without any light

    /// @{
    /// How the textures are laid on the surface, as in MeshMaterialParameters; the wrap modes as floats, as
    /// graphics interfaces take them.
    float wrapS = 0;
    float wrapT = 0;
    Vector4D<float> borderColor;
    Vector3D<double> translation;
    Vector3D<double> rotation;
    Vector3D<double> repeat = {1.0, 1.0, 1.0};
    Matrix4<double> matrix;
    /// @}

    std::string name; ///< UTF-8

    /// @{
    /// Pictures that vary what they are named after over the surface; empty where there is none. That of the
    /// opacity is opaque as all are: its brightness is what counts.
    MeshTextureInfo diffuseTexture;
    MeshTextureInfo emissiveTexture;
    MeshTextureInfo opacityTexture;
    MeshTextureInfo bumpTexture;
    /// @}

    /// @{
    /// Sets the colour, and that it was set.
    void setAmbient(Vector3D<float> color);
    void setDiffuse(Vector3D<float> color);
    void setSpecular(Vector3D<float> color);
    void setEmissive(Vector3D<float> color);
    /// @}
};
