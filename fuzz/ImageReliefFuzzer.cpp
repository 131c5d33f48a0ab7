#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <QFile>
#include <QImageReader>
#include <QString>
#include <QTemporaryDir>

#include "core/mesh/Mesh.h"
#include "fileformat/image/ImageFile.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Require.h"

// ImageFile::LoadFile over any bytes. The last four also choose how it is called, so that every picture is a
// seed.

namespace {

// What Qt decodes is not looked at here; larger pictures would only take time.
constexpr qint64 kMostPixels = 1 << 10;

// TGA files are known by their suffix alone.
class NamedFile : public fuzz::MemoryFile {
public:
    NamedFile()
    {
        fuzz::Require(QFile::link(Name(), NameOfTGA()));
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    }
    QString NameOfTGA() const { return m_directory.filePath(QStringLiteral("picture.tga")); }

private:
    QTemporaryDir m_directory;
};

bool IsSmall(const QString& name)
{
    const QSize size = QImageReader(name).size();
    // The height of a BMP file may be negative.
    return std::abs(qint64(size.width()) * size.height()) <= kMostPixels;
}

struct Choice {
    std::uint8_t switches = 0;
    std::int8_t blurRadius = 0;
    std::int8_t percent = 0;
    std::int8_t height = 0;
};

Choice ChoiceAtTheEnd(const std::uint8_t* data, std::size_t size)
{
    Choice choice;
    if (size >= sizeof choice)
        std::memcpy(&choice, data + size - sizeof choice, sizeof choice);
    return choice;
}

void RequireRelief(const Mesh& mesh)
{
    fuzz::RequireWhole(mesh);
    const int vertexCount = mesh.GetVertexNum();
    fuzz::Require(vertexCount >= 8 && vertexCount % 2 == 0);
    fuzz::Require(mesh.GetFaceNum() == 2 * vertexCount - 4);
    const double volume = mesh.CalcuateVolume();
    fuzz::Require(mesh.GetVolume() == volume);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const NamedFile kFile;
    kFile.Write(data, size);
    const Choice choice = ChoiceAtTheEnd(data, size);
    const QString name = (choice.switches & 8) != 0 ? kFile.NameOfTGA() : kFile.Name();
    if (!IsSmall(name))
        return 0;
    const int blurRadius = (choice.switches & 2) != 0 ? choice.blurRadius * (1 << 20) : choice.blurRadius;
    const float sizeX = (choice.switches & 16) != 0 ? INFINITY : 10.0F;
    Mesh mesh(0.03F);
    if (ImageFile::LoadFile(name, mesh, sizeX, 20, blurRadius, (choice.switches & 1) != 0, 1, choice.height,
                            choice.percent))
        RequireRelief(mesh);
    else
        fuzz::Require(mesh.GetVerticesVecPtr()->empty() && mesh.GetFacesVecPtr()->empty());
    return 0;
}
