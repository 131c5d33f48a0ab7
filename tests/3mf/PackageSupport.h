#pragma once

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "fileformat/3mf/Model3MF.h"
#include "tests/3mf/ModelSupport.h"
#include "tests/3mf/ZipBuilder.h"
#include "tests/common/Directory.h"

namespace test {

/// A package of files that are only bytes as yet.
class OwnedPackage : public OwnedModel {
public:
    bool LoadBytes(const QByteArray& archive)
    {
        const Directory directory;
        return LoadFile(directory.Write(archive));
    }
    QString ImageName() const
    {
        QString name;
        GetImage(name);
        return name;
    }
    QByteArray Image() const
    {
        QString name;
        return GetImage(name);
    }
};

/// Content types that give models the extension "model".
inline QByteArray ContentTypes()
{
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">
<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>
<Default Extension="model" ContentType="application/vnd.ms-package.3dmanufacturing-3dmodel+xml"/>
</Types>)";
}

/// A model part with one triangle in an object of this id.
inline QByteArray ModelPart(int id = 1)
{
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<model unit="inch" xml:lang="en-US" xmlns="http://schemas.microsoft.com/3dmanufacturing/core/2015/02">
<resources><object id=")" +
           QByteArray::number(id) + R"(" name="one" type="model"><mesh>
<vertices><vertex x="0" y="0" z="0"/><vertex x="1" y="0" z="0"/><vertex x="0" y="2.5" z="0"/></vertices>
<triangles><triangle v1="0" v2="1" v3="2"/></triangles>
</mesh></object></resources><build/></model>)";
}

inline const char* const kContentTypesName = "[Content_Types].xml";
inline const char* const kModelName = "3D/3dmodel.model";
inline const char* const kThumbnailName = "Metadata/thumbnail.png";

/// The beginning of an archive whose content types are the usual ones.
inline ZipBuilder UsualPackage()
{
    return ZipBuilder().Add(kContentTypesName, ContentTypes());
}

inline std::vector<int> ObjectIds(const Model3MF& package)
{
    std::vector<int> ids;
    for (const Mesh* const mesh : package.GetObjects())
        ids.push_back(mesh->GetObjectID());
    return ids;
}

} // namespace test
