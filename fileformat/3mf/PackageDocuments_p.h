#pragma once

#include <vector>

#include <QByteArray>
#include <QMap>
#include <QString>

#include "core/math/Vector3D.h"
#include "fileformat/3mf/Model3MF.h"

namespace kr::package3mf {

// The XML documents of a package that is written. Each builder replaces what @p document holds.

void BuildContentTypes(QByteArray& document);

/// @param hasImage  names the thumbnail too
void BuildPackageRelationships(bool hasImage, QByteArray& document);

/// Relationships for texture images by their paths in the package. Packages are written without textures as
/// yet.
void BuildTextureRelationships(const QMap<QString, QByteArray>& textureImages, QByteArray& document);

/// @param package  with unit, metadata and colours
/// @throws std::bad_alloc when memory runs out or the document is larger than kLargestByteArray
void BuildModel(const Model3MF& package, const std::vector<Model3MF::ModelObjectInfo>& objects,
                const Vector3D<float>& offset, QByteArray& document);

} // namespace kr::package3mf
