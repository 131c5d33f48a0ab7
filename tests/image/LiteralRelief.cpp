#include "tests/image/LiteralRelief.h"

#include <cstring>

#include "core/utility/ImageTool.h"

namespace test {

namespace {

using Points = std::vector<Vector3D<float>>;
using Faces = std::vector<TriangleFace>;

struct Grid {
    int w, h;
    float sizeX, sizeY, dx, dy;
};

QImage GreyLevels(QImage image, const ReliefArguments& arguments)
{
    if (arguments.blurRadius > 0)
        ImageTool::StackBlur(image, arguments.blurRadius);
    const int percent = arguments.scalePercent;
    if (percent < 100)
        image = image.scaled(image.width() * percent / 100, image.height() * percent / 100,
                             Qt::KeepAspectRatio, Qt::SmoothTransformation);
    ImageTool::ConvertToGrayScaleImage(image);
    return image;
}

void AddTop(const QImage& grey, const Grid& grid, const ReliefArguments& arguments, Points& vertices)
{
    const float range = arguments.maxHeight - arguments.minHeight;
    for (int r = 0; r < grid.h; ++r)
        for (int c = 0; c < grid.w; ++c) {
            const int g = qGreen(grey.pixel(c, r));
            const float level = static_cast<float>(arguments.brightIsHigh ? g : 255 - g);
            Vector3D<float> vertex(static_cast<float>(c) * grid.dx,
                                   static_cast<float>(grid.h - 1 - r) * grid.dy,
                                   arguments.minHeight + range * level / 255.0f);
            if (c == grid.w - 1)
                vertex.x = grid.sizeX;
            if (r == 0)
                vertex.y = grid.sizeY;
            vertices.push_back(vertex);
        }
}

void AddRing(const Grid& grid, Points& vertices)
{
    for (int i = 0; i < grid.w; ++i)
        vertices.emplace_back(static_cast<float>(i) * grid.dx, 0.0f, 0.0f);
    vertices.back().x = grid.sizeX;
    for (int i = 1; i < grid.h; ++i)
        vertices.emplace_back(grid.sizeX, static_cast<float>(i) * grid.dy, 0.0f);
    vertices.back().y = grid.sizeY;
    for (int i = grid.w - 2; i >= 0; --i)
        vertices.emplace_back(static_cast<float>(i) * grid.dx, grid.sizeY, 0.0f);
    for (int i = grid.h - 2; i >= 1; --i)
        vertices.emplace_back(0.0f, static_cast<float>(i) * grid.dy, 0.0f);
}

void AddInside(const Grid& grid, Points& vertices)
{
    for (int i = grid.h - 2; i >= 1; --i)
        for (int c = 1; c <= grid.w - 2; ++c)
            vertices.emplace_back(static_cast<float>(c) * grid.dx, static_cast<float>(i) * grid.dy, 0.0f);
}

void AddTopFaces(const Grid& grid, Faces& faces)
{
    for (int r = 0; r < grid.h - 1; ++r)
        for (int c = 0; c < grid.w - 1; ++c) {
            const int a = r * grid.w + c;
            faces.emplace_back(a, a + grid.w, a + 1);
            faces.emplace_back(a + grid.w, a + grid.w + 1, a + 1);
        }
}

// Which vertex lies under which of the top, told by walking the ring and then the inside.
std::vector<std::vector<int>> BottomTable(const Grid& grid)
{
    std::vector<std::vector<int>> table(std::size_t(grid.h), std::vector<int>(std::size_t(grid.w), -1));
    const auto at = [&](int r, int c) -> int& { return table[std::size_t(r)][std::size_t(c)]; };
    int next = grid.w * grid.h;
    for (int c = 0; c < grid.w; ++c)
        at(grid.h - 1, c) = next++;
    for (int r = grid.h - 2; r >= 0; --r)
        at(r, grid.w - 1) = next++;
    for (int c = grid.w - 2; c >= 0; --c)
        at(0, c) = next++;
    for (int r = 1; r <= grid.h - 2; ++r)
        at(r, 0) = next++;
    for (int r = 1; r <= grid.h - 2; ++r)
        for (int c = 1; c <= grid.w - 2; ++c)
            at(r, c) = next++;
    return table;
}

void AddBottomFaces(const Grid& grid, Faces& faces)
{
    const auto table = BottomTable(grid);
    for (std::size_t r = 0; r + 1 < table.size(); ++r)
        for (std::size_t c = 0; c + 1 < table[r].size(); ++c) {
            faces.emplace_back(table[r][c], table[r][c + 1], table[r + 1][c + 1]);
            faces.emplace_back(table[r][c], table[r + 1][c + 1], table[r + 1][c]);
        }
}

void AddWalls(const Grid& grid, Faces& faces)
{
    const int w = grid.w, h = grid.h, ringCount = 2 * w + 2 * h - 4;
    const auto top = [=](int r, int c) { return r * w + c; };
    const auto ring = [=](int k) { return w * h + k % ringCount; };
    for (int c = 0; c <= w - 2; ++c) {
        faces.emplace_back(top(h - 1, c + 1), top(h - 1, c), ring(c));
        faces.emplace_back(top(h - 1, c + 1), ring(c), ring(c + 1));
    }
    for (int r = 0, j = w + h - 2; r <= h - 2; ++r, --j) {
        faces.emplace_back(top(r, w - 1), top(r + 1, w - 1), ring(j - 1));
        faces.emplace_back(top(r, w - 1), ring(j - 1), ring(j));
    }
    for (int c = 0, m = 2 * w + h - 3; c <= w - 2; ++c, --m) {
        faces.emplace_back(top(0, c), top(0, c + 1), ring(m - 1));
        faces.emplace_back(top(0, c), ring(m - 1), ring(m));
    }
    for (int r = 0, j = 2 * w + h - 3; r <= h - 2; ++r, ++j) {
        faces.emplace_back(top(r, 0), ring(j), ring(j + 1));
        faces.emplace_back(top(r, 0), ring(j + 1), top(r + 1, 0));
    }
}

template<class Element>
std::string DifferenceOfLists(const char* name, const std::vector<Element>& list,
                              const std::vector<Element>& expected)
{
    if (list.size() != expected.size())
        return name + std::string(": ") + std::to_string(list.size()) + " instead of " +
               std::to_string(expected.size());
    for (std::size_t i = 0; i < list.size(); ++i)
        if (std::memcmp(&list[i], &expected[i], sizeof(Element)) != 0)
            return name + std::string(" differ at ") + std::to_string(i);
    return {};
}

} // namespace

LiteralRelief MakeLiteralRelief(QImage image, const ReliefArguments& arguments)
{
    const QImage grey = GreyLevels(std::move(image), arguments);
    const int w = grey.width(), h = grey.height();
    const Grid grid = {w,
                       h,
                       arguments.sizeX,
                       arguments.sizeY,
                       arguments.sizeX / static_cast<float>(w - 1),
                       arguments.sizeY / static_cast<float>(h - 1)};
    LiteralRelief relief;
    AddTop(grey, grid, arguments, relief.vertices);
    AddRing(grid, relief.vertices);
    AddInside(grid, relief.vertices);
    AddTopFaces(grid, relief.faces);
    AddBottomFaces(grid, relief.faces);
    AddWalls(grid, relief.faces);
    for (Vector3D<float>& vertex : relief.vertices)
        vertex += Vector3D<float>(grid.sizeX / 2, grid.sizeY / 2, 0);
    return relief;
}

std::string DifferenceOf(const Mesh& mesh, const LiteralRelief& expected)
{
    const std::string ofVertices =
        DifferenceOfLists("vertices", *mesh.GetVerticesVecPtr(), expected.vertices);
    return ofVertices.empty() ? DifferenceOfLists("faces", *mesh.GetFacesVecPtr(), expected.faces)
                              : ofVertices;
}

} // namespace test
