#include "core/mesh/MeshMaterialInfo.h"

static_assert(sizeof(bool) == 1, "the four marks are one byte each");

void MeshMaterialInfo::setAmbient(Vector3D<float> color)
{
    ambient = color;
    hasAmbient = true;
}

void MeshMaterialInfo::setDiffuse(Vector3D<float> color)
{
    diffuse = color;
    hasDiffuse = true;
}

void MeshMaterialInfo::setSpecular(Vector3D<float> color)
{
    specular = color;
    hasSpecular = true;
}

void MeshMaterialInfo::setEmissive(Vector3D<float> color)
{
    emissive = color;
    hasEmissive = true;
}
