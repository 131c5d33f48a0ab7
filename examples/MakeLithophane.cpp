// Makes a lithophane, a picture to hold against the light, as STL: MakeLithophane PICTURE WIDTH OUT.stl (mm)
#include <algorithm>
#include <cstdio>

#include <QImage>
#include <QString>

#include "core/mesh/Mesh.h"
#include "core/utility/Utility.h"
#include "fileformat/image/ImageFile.h"
#include "fileformat/stl/STLFile.h"

int main(int argc, char** argv)
{
    const double width = Utility::ConvertBufferToDouble(argc == 4 ? argv[2] : nullptr);
    if (!(width > 0)) {
        std::fputs("MakeLithophane PICTURE WIDTH OUT.stl: a width in mm\n", stderr);
        return 1;
    }
    const QString picture = QString::fromUtf8(argv[1]);
    QImage image;
    if (const int error = ImageFile::CheckImageAndParse(picture, image)) {
        constexpr const char* kErrors[] = {"", "cannot be read", "no picture, or too large", "empty",
                                           "no room"};
        std::fprintf(stderr, "%s: %s\n", argv[1], kErrors[error]);
        return 1;
    }
    const double depth = width * image.height() / image.width();
    // A nozzle draws nothing finer than 0.2 mm.
    const int scalePercent = int(std::clamp(100 * width / 0.2 / image.width(), 1.0, 100.0));
    Mesh mesh(0.03F);
    if (!ImageFile::LoadFile(picture, mesh, float(width), float(depth), 1, false, 0.6F, 3, scalePercent)) {
        std::fprintf(stderr, "%s: less than 2 pixels a side\n", argv[1]);
        return 1;
    }
    return STLFile::SaveFile(QString::fromUtf8(argv[3]), mesh, false, 80) ? 0 : 1;
}
