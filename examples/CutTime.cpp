// Tells how long a cutter takes for each set of a path file: CutTime FILE.path SPEED (mm a second)
#include <cmath>
#include <cstdio>

#include "core/utility/Utility.h"
#include "fileformat/path/DXFPathFile.h"

namespace {

double Length(const DXFPathFile::Contour& contour)
{
    double length = 0;
    for (std::size_t i = 1; i < contour.size(); ++i)
        length += std::hypot(contour[i].x - contour[i - 1].x, contour[i].y - contour[i - 1].y);
    return length;
}

} // namespace

int main(int argc, char** argv)
{
    const double speed = Utility::ConvertBufferToDouble(argc == 3 ? argv[2] : nullptr);
    DXFPathFile::Paths paths;
    std::map<int, QString> names;
    if (!(speed > 0) || !DXFPathFile::ReadDXFPathFile(paths, names, QString::fromUtf8(argv[1]))) {
        std::fputs("CutTime FILE.path SPEED: a path file, and a speed in mm a second\n", stderr);
        return 1;
    }
    for (const auto& [id, contours] : paths) {
        double length = 0;
        for (const DXFPathFile::Contour& contour : contours)
            length += Length(contour);
        std::printf("%d %s: %zu contours, %.1f mm, %.1f s\n", id, qUtf8Printable(names[id]), contours.size(),
                    length, length / speed);
    }
}
