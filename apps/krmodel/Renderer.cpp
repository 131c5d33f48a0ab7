#include "apps/krmodel/Renderer.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <system_error>
#include <thread>
#include <vector>

#include "apps/krmodel/Look.h"
#include "apps/krmodel/Shader.h"

namespace krmodel {

namespace {

constexpr int kFineSampling = 3; ///< samples along each side of a pixel
constexpr int kCoarseSampling = 2;
constexpr qint64 kMostFineSamples = 8'000'000;

int SamplingFor(QSize size)
{
    const qint64 samples = qint64(size.width()) * size.height() * kFineSampling * kFineSampling;
    return samples <= kMostFineSamples ? kFineSampling : kCoarseSampling;
}

std::vector<ScreenPoint> ProjectAll(const Scene& scene, const Camera& camera)
{
    std::vector<ScreenPoint> projected;
    projected.reserve(scene.points.size());
    for (const Eigen::Vector3f& point : scene.points)
        projected.push_back(camera.Project(point));
    return projected;
}

void DrawFaces(const Scene& scene, const std::vector<ScreenPoint>& projected, VisibilityBuffer& visible)
{
    for (size_t i = 0; i < scene.faces.size(); ++i) {
        const TriangleFace& face = scene.faces[i];
        if (face[0] >= 0)
            visible.Draw(int(i), projected[size_t(face[0])], projected[size_t(face[1])],
                         projected[size_t(face[2])]);
    }
}

/// Turns light into the numbers of a picture file (sRGB), by table: the exact power costs more than the
/// shading.
class Encoder {
public:
    Encoder()
    {
        for (size_t i = 0; i < m_table.size(); ++i)
            m_table[i] = EncodedPart(float(i) / float(m_table.size() - 1));
    }

    QRgb operator()(const Sample& light) const
    {
        const float cover = light.w();
        if (cover <= 0)
            return 0;
        return qRgba(Look(light.x() / cover), Look(light.y() / cover), Look(light.z() / cover),
                     int(std::lround(cover * 255)));
    }

private:
    int Look(float light) const
    {
        return m_table[size_t(std::lround(std::clamp(light, 0.0F, 1.0F) * float(m_table.size() - 1)))];
    }

    std::array<int, 4096> m_table;
};

Sample MeanOf(const Shader& shader, int sampling, int column, int row)
{
    Sample sum = Sample::Zero();
    for (int y = row * sampling; y < (row + 1) * sampling; ++y)
        for (int x = column * sampling; x < (column + 1) * sampling; ++x)
            sum += shader.At(x, y);
    return sum / float(sampling * sampling);
}

/// As many as the system grants; none will do too.
template<class Work>
std::vector<std::thread> StartOnOtherProcessors(const Work& work)
{
    std::vector<std::thread> threads;
    try {
        while (threads.size() + 1 < std::thread::hardware_concurrency())
            threads.emplace_back(work);
    } catch (const std::system_error&) {
        // The caller does what these would have done.
    }
    return threads;
}

/// Each row is worked out by itself, so the picture does not depend on the number of threads.
void ShadeRows(const Shader& shader, int sampling, QImage& image)
{
    const Encoder encode;
    uchar* const pixels = image.bits();
    std::atomic<int> nextRow{0};
    const auto work = [&, size = image.size(), step = image.bytesPerLine()] {
        for (int row = nextRow++; row < size.height(); row = nextRow++) {
            uchar* pixel = pixels + qsizetype(row) * step;
            for (int column = 0; column < size.width(); ++column, pixel += sizeof(QRgb)) {
                const QRgb colour = encode(MeanOf(shader, sampling, column, row));
                std::memcpy(pixel, &colour, sizeof colour);
            }
        }
    };
    std::vector<std::thread> threads = StartOnOtherProcessors(work);
    work();
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace

QImage RenderModel(const Model& model, const View& view, QSize size, const Background& background)
{
    const int sampling = SamplingFor(size);
    Camera camera(view, size * sampling);
    const Scene scene = BuildScene(model, camera);
    const std::vector<ScreenPoint> projected = ProjectAll(scene, camera);
    VisibilityBuffer visible(camera.GetSize());
    DrawFaces(scene, projected, visible);
    const Shader shader(scene, camera, visible, projected, background);
    QImage image(size, background.isTransparent ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    ShadeRows(shader, sampling, image);
    return image;
}

} // namespace krmodel
