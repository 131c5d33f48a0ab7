#pragma once

#include <memory>
#include <vector>

#include <QBuffer>
#include <QByteArray>
#include <QImage>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "fileformat/3mf/Model3MF.h"
#include "tests/3mf/ZipBuilder.h"

namespace test {

constexpr char kModelType[] = "application/vnd.ms-package.3dmanufacturing-3dmodel+xml";

/// A tetrahedron in the corner of the axes, of sides 1, that faces outwards: four facets.
constexpr char kTetrahedron[] =
    "<mesh><vertices><vertex x='0' y='0' z='0'/><vertex x='1' y='0' z='0'/><vertex x='0' y='1' z='0'/>"
    "<vertex x='0' y='0' z='1'/></vertices><triangles><triangle v1='0' v2='2' v3='1'/>"
    "<triangle v1='0' v2='1' v3='3'/><triangle v1='1' v2='2' v3='3'/><triangle v1='2' v2='0' v3='3'/>"
    "</triangles></mesh>";

inline QByteArray ObjectText(int id, const QByteArray& name, const QByteArray& content = kTetrahedron)
{
    return "<object id='" + QByteArray::number(id) + "' name='" + name + "'>" + content + "</object>";
}

inline QByteArray ItemText(int id, const QByteArray& transform)
{
    return "<item objectid='" + QByteArray::number(id) + "' transform='" + transform + "'/>";
}

/// @param others  elements beside resources and build
inline QByteArray ModelText(const QByteArray& unit, const QByteArray& resources,
                            const QByteArray& items = QByteArray(), const QByteArray& others = QByteArray())
{
    return "<?xml version='1.0' encoding='UTF-8'?><model unit='" + unit + "'>" + others + "<resources>" +
           resources + "</resources><build>" + items + "</build></model>";
}

inline QByteArray ContentTypesText(const QByteArray& elements)
{
    return "<Types><Default Extension='rels' "
           "ContentType='application/vnd.openxmlformats-package.relationships+xml'/>" +
           elements + "</Types>";
}

/// A package of one model part, to which entries may be added.
inline ZipBuilder Package(const QByteArray& model)
{
    const QByteArray type = QByteArray("<Default Extension='model' ContentType='") + kModelType + "'/>";
    return ZipBuilder().Add("[Content_Types].xml", ContentTypesText(type)).Add("3D/3dmodel.model", model);
}

inline QByteArray Picture(QSize size, const char* format)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(qRgb(200, 100, 50));
    QBuffer buffer;
    EXPECT_TRUE(buffer.open(QIODevice::WriteOnly) && image.save(&buffer, format));
    return buffer.data();
}

/// A package of one object and a picture.
inline QByteArray PackageWithPicture(const QByteArray& pictureName, const QByteArray& picture)
{
    return Package(ModelText("millimeter", ObjectText(1, "it"))).Add(pictureName, picture).Bytes();
}

/// A package that was read, with the meshes that it does not delete itself.
struct ReadPackage {
    explicit ReadPackage(const QString& fileName)
    {
        isRead = package.LoadFile(fileName);
        for (Mesh* const mesh : package.GetObjects())
            meshes.emplace_back(mesh);
    }

    bool isRead = false;
    Model3MF package;
    std::vector<std::unique_ptr<Mesh>> meshes;
};

} // namespace test
