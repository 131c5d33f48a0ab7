// Lists the objects of a 3MF package with their sizes and places in millimetres: ListParts PACKAGE.3mf
#include <cstdio>
#include <memory>

#include "core/mesh/Mesh.h"
#include "fileformat/3mf/Model3MF.h"

int main(int argc, char** argv)
{
    Model3MF package;
    const bool isRead = argc == 2 && package.LoadFile(QString::fromUtf8(argv[1]));
    // What was read is ours to delete, also after a failure.
    std::vector<std::unique_ptr<Mesh>> parts;
    for (Mesh* const part : package.GetObjects())
        parts.emplace_back(part);
    // A file that is missing or no package is read with success, and gives nothing.
    if (!isRead || parts.empty()) {
        std::fputs("ListParts PACKAGE.3mf: no objects can be read\n", stderr);
        return 1;
    }
    const QMap<QString, QString> description = package.GetDescription();
    for (auto text = description.begin(); text != description.end(); ++text)
        std::printf("%s: %s\n", qUtf8Printable(text.key()), qUtf8Printable(text.value()));
    const double scale = package.GetUnitScale();
    for (const auto& part : parts) {
        const MeshBoundingBox box = part->GetBoundingBox();
        const Matrix4<double> place = part->GetTransformMatrix();
        std::printf("%s, %.2f x %.2f x %.2f mm, at %g %g %g\n", qUtf8Printable(part->GetObjectName()),
                    double(box.maximum.x - box.minimum.x) * scale,
                    double(box.maximum.y - box.minimum.y) * scale,
                    double(box.maximum.z - box.minimum.z) * scale, place.get(0, 3) * scale,
                    place.get(1, 3) * scale, place.get(2, 3) * scale);
    }
}
