#include "fileformat/image/ImageFile.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <optional>
#include <utility>

#include <QFile>
#include <QImage>
#include <QString>

#include "core/common/FileName_p.h"
#include "core/mesh/Mesh.h"
#include "core/utility/ImageTool.h"
#include "core/utility/Utility.h"
#include "fileformat/image/HeightField_p.h"
#include "fileformat/image/Relief_p.h"

namespace {

constexpr const char* kSuffixes[] = {"jpg", "jpeg", "png", "bmp", "tga", "tiff"};

// A relief has 4 faces a pixel, less 4, which are to be counted in an int.
constexpr qint64 kMaxPixels = qint64(1) << 29;
constexpr int kMinSide = 2;

// Published numbers, see CheckImageAndParse().
enum class LoadResult { Loaded = 0, FileUnreadable = 1, NotLoaded = 2, Empty = 3, EmptyWhenConverted = 4 };

bool IsWithinLimit(const QSize& size)
{
    return qint64(size.width()) * size.height() <= kMaxPixels;
}

// What QImage::scaled() makes of a picture, without a picture.
QSize ScaledSize(const QSize& size, int percent)
{
    if (percent >= 100)
        return size;
    if (percent <= 0)
        return {0, 0};
    const auto part = [percent](int side) { return int(qint64(side) * percent / 100); };
    return size.scaled(part(size.width()), part(size.height()), Qt::KeepAspectRatio);
}

bool GivesRelief(const QSize& size, int scalePercent)
{
    const QSize scaled = ScaledSize(size, scalePercent);
    return IsWithinLimit(size) && std::min(scaled.width(), scaled.height()) >= kMinSide;
}

// `isWanted` judges the size of the picture: as its header tells it, before anything is decoded, or else when
// it is there.
template<class IsWanted>
LoadResult Decode(const QString& fileName, QImage& image, IsWanted isWanted)
{
    if (!kr::IsPlainFile(fileName))
        return LoadResult::NotLoaded;
    QFile file(fileName);
    const auto wholeSize = [&isWanted](const QSize& size) {
        return !size.isValid() || isWanted(size) ? std::make_optional(size) : std::nullopt;
    };
    if (!ImageTool::ReadPicture(file, image, wholeSize))
        return LoadResult::NotLoaded;
    if (image.isNull())
        return LoadResult::Empty;
    image = std::move(image).convertToFormat(QImage::Format_RGB32);
    return image.isNull() ? LoadResult::EmptyWhenConverted : LoadResult::Loaded;
}

template<class IsWanted>
LoadResult LoadPicture(const QString& fileName, QImage& image, IsWanted isWanted)
{
    image = QImage();
    if (!Utility::TestFileReadable(fileName))
        return LoadResult::FileUnreadable;
    QImage decoded;
    const LoadResult result = Decode(fileName, decoded, isWanted);
    if (result == LoadResult::Loaded)
        image.swap(decoded);
    return result;
}

void ScaleDown(QImage& image, int percent)
{
    if (percent < 100)
        image =
            image.scaled(ScaledSize(image.size(), percent), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

// Nothing in here throws: the mesh is replaced as a whole or not at all. The finalisation sets both counts.
void ReplaceContents(Mesh& mesh, std::vector<Vector3D<float>> vertices, std::vector<TriangleFace> faces,
                     std::optional<double> volume)
{
    mesh.Cleanup();
    mesh.GetVerticesVecPtr()->swap(vertices);
    mesh.GetFacesVecPtr()->swap(faces);
    mesh.PostProcessFromVertexBuffer(nullptr, false, false, true, false, nullptr, nullptr);
    mesh.SetVolume(volume ? *volume : mesh.CalcuateVolume());
}

} // namespace

QString ImageFile::GetSupportedFileExtension()
{
    QString patterns;
    for (const char* suffix : kSuffixes)
        patterns += QLatin1String(patterns.isEmpty() ? "*." : " *.") + QLatin1String(suffix);
    return patterns;
}

bool ImageFile::IsValidFileExtenson(const QString& suffix)
{
    return std::any_of(std::begin(kSuffixes), std::end(kSuffixes),
                       [&](const char* known) { return suffix == QLatin1String(known); });
}

int ImageFile::CheckImageAndParse(const QString& fileName, QImage& image)
{
    return static_cast<int>(LoadPicture(fileName, image, IsWithinLimit));
}

bool ImageFile::LoadFile(const QString& fileName, Mesh& mesh, float sizeX, float sizeY, int blurRadius,
                         bool brightIsHigh, float minHeight, float maxHeight, int scalePercent)
{
    QImage image;
    const auto givesRelief = [=](const QSize& size) { return GivesRelief(size, scalePercent); };
    if (LoadPicture(fileName, image, givesRelief) != LoadResult::Loaded)
        return false;
    if (blurRadius > 0)
        ImageTool::StackBlur(image, blurRadius);
    ScaleDown(image, scalePercent);
    ImageTool::ConvertToGrayScaleImage(image);
    if (image.isNull()) // no memory on the way here
        throw std::bad_alloc();
    const kr::image::HeightField field(std::move(image), {sizeX, sizeY, brightIsHigh, minHeight, maxHeight});
    const std::optional<double> volume = kr::image::ReliefVolume(field);
    ReplaceContents(mesh, kr::image::ReliefVertices(field),
                    kr::image::ReliefFaces(field.Columns(), field.Rows()), volume);
    return true;
}
