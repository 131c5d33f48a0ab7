#pragma once

#include <vector>

#include <QByteArray>

#include "core/mesh/Mesh.h"
#include "fileformat/stl/STLFile.h"
#include "tests/stl/STLBuilders.h"

namespace test {

/// Adds the twelve facets of a cube from (0, 0, 0) to (size, size, size), wound outwards.
template<class Builder>
Builder Cube(Builder builder, float size)
{
    const auto corner = [=](int i) {
        return Point((i & 1) != 0 ? size : 0, (i & 2) != 0 ? size : 0, (i & 4) != 0 ? size : 0);
    };
    const int quads[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4},
                             {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    for (const auto& quad : quads) {
        builder.Facet(corner(quad[0]), corner(quad[1]), corner(quad[2]));
        builder.Facet(corner(quad[0]), corner(quad[2]), corner(quad[3]));
    }
    return builder;
}

struct LoadOptions {
    bool isLight = false;
    int headerSize = 80;
    bool forceBinary = false;
};

inline bool Load(const QByteArray& bytes, Mesh& mesh, LoadOptions options = {})
{
    const Directory directory;
    return STLFile::LoadFile(directory.Write(bytes), mesh, options.isLight, options.headerSize,
                             options.forceBinary);
}

inline bool Loads(const QByteArray& bytes, LoadOptions options = {})
{
    Mesh mesh(0.03f);
    return Load(bytes, mesh, options);
}

inline int FacesIn(const QByteArray& bytes, LoadOptions options = {})
{
    Mesh mesh(0.03f);
    return Load(bytes, mesh, options) ? mesh.GetFaceNum() : -1;
}

} // namespace test
