#pragma once

#include "fileformat/3mf/Model3MF.h"

namespace test {

/// The model part as an XML writer writes it element by element.
QByteArray WriteModelPlainly(const Model3MF& package, const std::vector<Model3MF::ModelObjectInfo>& objects,
                             const Vector3D<float>& offset);

} // namespace test
