// Puts parts side by side on a plate, each an object of its name: PackPlate PLATE.3mf PART.stl...
#include <cstdio>
#include <memory>

#include "core/mesh/Mesh.h"
#include "core/utility/Utility.h"
#include "fileformat/3mf/Model3MF.h"
#include "fileformat/stl/STLFile.h"

int main(int argc, char** argv)
{
    constexpr float kGapMm = 5;
    std::vector<std::unique_ptr<Mesh>> parts;
    std::vector<Model3MF::ModelObjectInfo> objects;
    float x = 0;
    for (int i = 2; i < argc; ++i) {
        const QString fileName = QString::fromUtf8(argv[i]);
        parts.push_back(std::make_unique<Mesh>(0.03F));
        if (!STLFile::LoadFile(fileName, *parts.back(), true, 80, false)) {
            std::fprintf(stderr, "%s cannot be read\n", argv[i]);
            return 1;
        }
        const MeshBoundingBox box = parts.back()->GetBoundingBox();
        Model3MF::ModelObjectInfo object;
        object.mesh = parts.back().get();
        object.name = Utility::GetFileNameNoExtension(fileName);
        object.position = {x - box.minimum.x, -box.minimum.y, -box.minimum.z};
        objects.push_back(object);
        x += box.maximum.x - box.minimum.x + kGapMm;
    }
    if (objects.empty()) {
        std::fputs("PackPlate PLATE.3mf PART.stl...: a plate and its parts\n", stderr);
        return 1;
    }
    Model3MF package;
    package.SetUnit(QStringLiteral("millimeter"));
    package.SetMaterial({1, {QStringLiteral("#C0A040"), QStringLiteral("#8C9199")}});
    package.AddDescription(QStringLiteral("Title"), QStringLiteral("Plate of %1").arg(objects.size()));
    return package.SaveFile(QString::fromUtf8(argv[1]), objects, {0, 0, 0}) ? 0 : 1;
}
