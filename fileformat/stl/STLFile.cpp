#include "fileformat/stl/STLFile.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

#include <QByteArray>
#include <QFile>

#include "core/common/HalfEdgePairing_p.h"
#include "core/mesh/Mesh.h"
#include "fileformat/common/PlainFile_p.h"
#include "fileformat/stl/STLBinary_p.h"
#include "fileformat/stl/STLScanner_p.h"
#include "fileformat/stl/STLText_p.h"
#include "fileformat/stl/STLVariant_p.h"
#include "fileformat/stl/Stitch_p.h"

namespace {

using kr::BlockReader;
using kr::LineEnds;
using kr::stl::Probe;
using kr::stl::SolidSearch;
using kr::stl::TriangleSoup;
using kr::stl::Variant;

// Room for files of more facets to the byte than any program writes. It is memory only once it is used, but a
// system may refuse to promise very much of it; beyond, the list grows with what is read.
std::size_t ExpectedCorners(qint64 fileSize)
{
    constexpr qint64 kBytesPerCorner = 32;
    constexpr qint64 kMostPromised = qint64(1) << 26;
    return static_cast<std::size_t>(std::clamp<qint64>(fileSize / kBytesPerCorner, 3, kMostPromised));
}

std::optional<TriangleSoup> ReadTextFile(QFile& file)
{
    if (!file.seek(0))
        return std::nullopt;
    BlockReader source(file, LineEnds::WithoutCarriageReturns);
    return kr::stl::ReadText(source, ExpectedCorners(file.size()));
}

std::optional<TriangleSoup> ReadDetectingVariant(QFile& file, int headerSize)
{
    const Variant variant = kr::stl::FindVariant(file);
    if (variant == Variant::Unreadable)
        return std::nullopt;
    if (variant == Variant::Text) {
        std::optional<TriangleSoup> soup = ReadTextFile(file);
        // Headers of binary files may begin with "solid" too; text without a facet is taken for one.
        if (!soup || soup->FacetCount() > 0)
            return soup;
    }
    return kr::stl::ReadBinary(file, headerSize);
}

std::optional<TriangleSoup> ReadSoup(const QString& fileName, int headerSize, bool forceBinary)
{
    QFile file(fileName);
    if (!kr::OpenForReading(file))
        return std::nullopt;
    std::optional<TriangleSoup> soup =
        forceBinary ? kr::stl::ReadBinary(file, headerSize) : ReadDetectingVariant(file, headerSize);
    if (soup && soup->FacetCount() > kr::kMaxFacets)
        return std::nullopt;
    return soup;
}

// Nothing in here throws: the mesh is replaced as a whole or not at all. The finalisation sets both counts.
void ReplaceContents(Mesh& mesh, kr::stl::StitchedMesh stitched, bool lightPostProcess)
{
    mesh.GetFacesVecPtr()->swap(stitched.faces);
    mesh.GetVerticesVecPtr()->swap(stitched.vertices);
    mesh.GetTexCoordVecPtr()->clear();
    mesh.GetTextureFacesVecPtr()->clear();
    const bool provideNormals = !lightPostProcess;
    const bool provideNeighbours = !lightPostProcess;
    mesh.PostProcess(false, true, provideNormals, provideNeighbours, nullptr, nullptr);
    // Stitching has mostly measured the volume on its way. It leaves no face for the finalisation to drop.
    mesh.SetVolume(stitched.volume ? *stitched.volume : mesh.CalcuateVolume());
}

} // namespace

bool STLFile::LoadFile(const QString& fileName, Mesh& mesh, bool lightPostProcess, int headerSize,
                       bool forceBinary)
{
    std::optional<TriangleSoup> soup = ReadSoup(fileName, headerSize, forceBinary);
    if (!soup)
        return false;
    ReplaceContents(mesh,
                    kr::stl::StitchCorners(std::move(soup->corners), soup->cornerCount, soup->normalCount),
                    lightPostProcess);
    return true;
}

int STLFile::skipWhiteSpace(QFile& file, QByteArray& probe, int probeSize)
{
    kr::SingleByteReader source(file);
    Probe bytes({probe.constData(), static_cast<std::size_t>(probe.size())});
    const SolidSearch result = kr::stl::FindSolid(source, bytes, probeSize);
    probe = QByteArray(bytes.Bytes().data(), static_cast<int>(bytes.Bytes().size()));
    return static_cast<int>(result);
}

void STLFile::getNextToken(QFile& file, char* buffer, int bufferSize)
{
    if (bufferSize < 1)
        return;
    const auto size = static_cast<std::size_t>(bufferSize);
    std::memset(buffer, 0, size);
    kr::SingleByteReader source(file);
    kr::stl::ReadToken(source, buffer, size - 1);
}
