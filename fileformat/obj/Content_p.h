#pragma once

#include <cmath>
#include <limits>
#include <vector>

#include <QString>

#include "core/math/TriangleFace.h"
#include "core/math/Vector2D.h"
#include "core/math/Vector3D.h"
#include "core/mesh/MeshTextureGroup.h"

namespace kr::obj {

/// What an OBJ file says, as it says it: faces are not checked, materials have names only.
struct Content {
    std::vector<Vector3D<float>> vertices;
    std::vector<Vector2D<float>> texCoords;
    std::vector<TriangleFace> faces;
    std::vector<TriangleFace> textureFaces;
    std::vector<MeshTextureGroup> groups;
    QString materialLibrary; ///< named by the last "mtllib"; empty when there is none
};

/// The point of a "v" statement with @p count numbers, three or more. The fourth divides the others if it is
/// the last one and not almost zero; with more numbers it belongs to a colour.
inline Vector3D<float> VertexFromFile(const double* values, int count)
{
    constexpr double kAlmostZero = 1e-6;
    double point[3] = {values[0], values[1], values[2]};
    if (count == 4 && std::fabs(values[3]) > kAlmostZero) {
        for (double& coordinate : point)
            coordinate /= values[3];
    }
    return {static_cast<float>(point[0]), static_cast<float>(point[1]), static_cast<float>(point[2])};
}

/// An index of the file, from 1, as an index of a list, from 0. There is none below the lowest.
constexpr int IndexFromFile(int number)
{
    return number == std::numeric_limits<int>::min() ? number : number - 1;
}

/// Triangulates a polygon, corner by corner, into a fan around its first one.
class Fan {
public:
    explicit Fan(std::vector<TriangleFace>& triangles) : m_triangles(triangles) {}

    void AddCorner(int index)
    {
        if (m_cornerCount == 0)
            m_first = index;
        else if (m_cornerCount > 1)
            m_triangles.emplace_back(m_first, m_previous, index);
        m_previous = index;
        ++m_cornerCount;
    }
    int TriangleCount() const { return m_cornerCount > 2 ? m_cornerCount - 2 : 0; }
    /// Takes the triangles back.
    void Drop() { m_triangles.resize(m_triangles.size() - static_cast<std::size_t>(TriangleCount())); }

private:
    std::vector<TriangleFace>& m_triangles;
    int m_cornerCount = 0;
    int m_first = 0;
    int m_previous = 0;
};

/// One "f" statement on its way into the lists.
class Polygon {
public:
    explicit Polygon(Content& content)
        : m_content(content), m_faces(content.faces), m_textureFaces(content.textureFaces)
    {}

    /// The numbers are those of the file.
    void AddVertex(int number) { m_faces.AddCorner(IndexFromFile(number)); }
    void AddTexture(int number) { m_textureFaces.AddCorner(IndexFromFile(number)); }
    /// Credits the triangles to the current group. Those with texture are counted in their own list.
    void Finish()
    {
        if (m_content.groups.empty())
            return;
        if (m_textureFaces.TriangleCount() > 0)
            Credit(m_textureFaces.TriangleCount(), m_content.textureFaces.size());
        else
            Credit(m_faces.TriangleCount(), m_content.faces.size());
    }
    /// Takes everything back.
    void Drop()
    {
        m_faces.Drop();
        m_textureFaces.Drop();
    }

private:
    void Credit(int count, std::size_t listSize)
    {
        MeshTextureGroup& group = m_content.groups.back();
        if (group.firstFaceIndex < 0)
            group.firstFaceIndex = static_cast<int>(listSize) - count;
        group.faceCount += count;
    }

    Content& m_content;
    Fan m_faces;
    Fan m_textureFaces;
};

} // namespace kr::obj
