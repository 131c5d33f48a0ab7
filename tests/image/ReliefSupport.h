#pragma once

#include <QImage>
#include <QString>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "fileformat/image/ImageFile.h"
#include "tests/common/Directory.h"
#include "tests/common/PictureFiles.h"
#include "tests/image/LiteralRelief.h"

namespace test {

inline bool LoadRelief(const QString& path, Mesh& mesh, const ReliefArguments& arguments = {})
{
    return ImageFile::LoadFile(path, mesh, arguments.sizeX, arguments.sizeY, arguments.blurRadius,
                               arguments.brightIsHigh, arguments.minHeight, arguments.maxHeight,
                               arguments.scalePercent);
}

/// The relief of such a picture, from a file without loss.
inline Mesh ReliefOf(const QImage& image, const ReliefArguments& arguments = {})
{
    const Directory directory;
    Mesh mesh(0.03f);
    EXPECT_TRUE(LoadRelief(directory.Write(Encoded(image, "BMP")), mesh, arguments));
    return mesh;
}

} // namespace test
