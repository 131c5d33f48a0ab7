#include "tests/reliability/Formats.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>
#include <ostream>
#include <stdexcept>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>

#include "core/mesh/Mesh.h"
#include "fileformat/3mf/Model3MF.h"
#include "fileformat/cad/STEPAndIGESFile.h"
#include "fileformat/image/ImageFile.h"
#include "fileformat/obj/OBJFile.h"
#include "fileformat/path/DXFPathFile.h"
#include "fileformat/stl/STLFile.h"
#include "fileformat/texture/TextureFile.h"
#include "tests/cad/CadFiles.h"
#include "tests/common/FilledMesh.h"
#include "tests/common/PictureFiles.h"
#include "tests/reliability/Digest.h"
#include "tests/texture/TextureSupport.h"

namespace test {

namespace {

constexpr int kHeaderSize = 80;

// ---- what is written

/// A closed lump whose coordinates need all their digits.
Mesh Lump()
{
    Mesh mesh(0.03f);
    constexpr int kAround = 6;
    std::vector<Vector3D<float>> vertices = {{0, 0, -2.125f}, {0.1f, -0.2f, 3.3f}};
    std::vector<TriangleFace> faces;
    for (int i = 0; i < kAround; ++i) {
        const double turn = 2 * 3.14159265358979 * i / kAround;
        vertices.push_back({float(1.7 * std::cos(turn)), float(1.3 * std::sin(turn)), 0.01f * float(i)});
        const int here = 2 + i;
        const int next = 2 + (i + 1) % kAround;
        faces.push_back({0, next, here});
        faces.push_back({1, here, next});
    }
    mesh.AddVertexAndFaces(vertices, faces);
    mesh.SetVolume(mesh.CalcuateVolume());
    return mesh;
}

void WriteBytes(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    EXPECT_EQ(file.write(bytes), bytes.size());
}

bool WriteBinarySTL(const QString& path)
{
    return STLFile::SaveFile(path, Lump(), false, kHeaderSize);
}

bool WriteTextSTL(const QString& path)
{
    return STLFile::SaveFile(path, Lump(), true, kHeaderSize);
}

bool WriteOBJ(const QString& path)
{
    return OBJFile::SaveFile(path, Lump(), false, true);
}

bool Write3MF(const QString& path)
{
    Mesh mesh = Lump();
    std::vector<Model3MF::ModelObjectInfo> objects(2);
    objects[0].mesh = &mesh;
    objects[0].name = QStringLiteral("Erste");
    objects[0].position = {1.5f, -0.25f, 3};
    objects[1].mesh = &mesh;
    objects[1].transform.set(0, 0, 2.5);
    Model3MF package;
    package.SetUnit(QStringLiteral("inch"));
    package.AddDescription(QStringLiteral("Title"), QStringLiteral("Lump"));
    package.SetMaterial({7, {QStringLiteral("#8C9199"), QStringLiteral("#C0A04080")}});
    package.SetImage(Encoded(RandomPicture(5, 4), "PNG"), QStringLiteral("Metadata/thumbnail.png"));
    return package.SaveFile(path, objects, {0.5f, 0, 0});
}

bool WriteTexture(const QString& path)
{
    MeshMaterialParameters parameters;
    parameters.matrix.repeat = {1234.5, 2.25, 1};
    parameters.matrix.rotation = {0, 0, 12.75};
    parameters.matrix.translation = {0.0625, -1.5, 0};
    return TextureOf(RandomPicture(6, 5), QStringLiteral("oak.png"), parameters).SaveFile(path);
}

bool WritePaths(const QString& path)
{
    const DXFPathFile::Paths paths = {{3, {{{0.1, 1e-300}, {-2.5, 7}}, {}}}, {-1, {}}, {8, {{{1, 2}}}}};
    return DXFPathFile::WriteDXFPathFile(paths, {{3, "Schnitt \xc3\x98"}}, path);
}

template<bool (*Write)(const QString&)>
void Sample(const QString& path)
{
    EXPECT_TRUE(Write(path)) << path.toStdString();
}

void WritePicture(const QString& path)
{
    WriteBytes(path, Encoded(RandomPicture(7, 5, 3), QFileInfo(path).suffix().toUpper().toLatin1()));
}

// ---- what is read

void RequireWhole(const Mesh& mesh)
{
    const int vertexCount = static_cast<int>(mesh.GetVerticesVecPtr()->size());
    EXPECT_EQ(mesh.GetVertexNum(), vertexCount);
    EXPECT_EQ(mesh.GetFaceNum(), static_cast<int>(mesh.GetFacesVecPtr()->size()));
    for (const TriangleFace& face : *mesh.GetFacesVecPtr()) {
        for (const int index : face.v)
            EXPECT_TRUE(index >= 0 && index < vertexCount) << index;
    }
}

QByteArray DigestOf(const Mesh& mesh)
{
    RequireWhole(mesh);
    return Digest().Add(mesh).Result();
}

/// What a reader makes of a mesh when memory runs out.
enum class WithoutMemory { LeavesTheMesh, EmptiesTheMesh };

/// Of a load into one mesh that leaves it alone when it refuses the file.
template<typename Load>
QByteArray DigestOfMesh(WithoutMemory withoutMemory, const Load& load)
{
    Mesh mesh = FilledMesh();
    bool isLoaded = false;
    try {
        isLoaded = load(mesh);
    } catch (const std::bad_alloc&) {
        if (withoutMemory == WithoutMemory::LeavesTheMesh)
            ExpectFilledMesh(mesh);
        else
            EXPECT_TRUE(mesh.GetVerticesVecPtr()->empty() && mesh.GetFacesVecPtr()->empty());
        throw;
    }
    if (isLoaded)
        return DigestOf(mesh);
    ExpectFilledMesh(mesh);
    return {};
}

QByteArray ReadSTL(const QString& path)
{
    return DigestOfMesh(WithoutMemory::LeavesTheMesh, [&](Mesh& mesh) {
        try {
            return STLFile::LoadFile(path, mesh, false, kHeaderSize, false);
        } catch (const std::out_of_range&) {
            // The promised answer to a text with fewer normals than facets.
            return false;
        }
    });
}

QByteArray ReadOBJ(const QString& path)
{
    std::vector<MeshTextureGroup> groups(2);
    const QByteArray mesh = DigestOfMesh(
        WithoutMemory::EmptiesTheMesh, [&](Mesh& m) { return OBJFile::LoadFile(path, m, groups, false, 0); });
    if (mesh.isEmpty()) {
        EXPECT_TRUE(groups.empty());
        return {};
    }
    Digest digest;
    digest.Add(mesh);
    for (const MeshTextureGroup& group : groups)
        digest.Add(group);
    return digest.Result();
}

QByteArray ReadMTL(const QString& path)
{
    std::vector<MeshMaterialInfo> materials(2);
    if (!OBJFile::LoadMTLFile(path, materials, 0)) {
        EXPECT_TRUE(materials.empty());
        return {};
    }
    Digest digest;
    for (const MeshMaterialInfo& material : materials)
        digest.Add(material);
    return digest.Result();
}

/// The list is a copy, for which there may be no memory; tests let one allocation fail, not two in a row.
std::vector<Mesh*> ObjectsOf(const Model3MF& package) noexcept
{
    try {
        return package.GetObjects();
    } catch (const std::bad_alloc&) {
        return package.GetObjects();
    }
}

/// A package whose meshes go with it.
struct OwnedPackage {
    ~OwnedPackage()
    {
        for (const Mesh* mesh : ObjectsOf(package))
            delete mesh;
    }
    Model3MF package;
};

QByteArray Read3MF(const QString& path)
{
    OwnedPackage owned;
    Model3MF& package = owned.package;
    const bool isLoaded = package.LoadFile(path);
    package.ReadComponentsformId();
    Digest digest;
    for (const Mesh* mesh : package.GetObjects())
        digest.Add(DigestOf(*mesh));
    if (!isLoaded)
        return {};
    QString imageName;
    digest.Add(package.GetImage(imageName)).Add(imageName).Add(package.GetUnit());
    const QMap<QString, QString> description = package.GetDescription();
    for (auto entry = description.begin(); entry != description.end(); ++entry)
        digest.Add(entry.key()).Add(entry.value());
    digest.Add(package.GetMaterial().id);
    for (const QString& color : package.GetMaterial().colors)
        digest.Add(color);
    digest.Add(package.GetModelExtension()).Add(package.GetRelsExtension());
    const QMap<int, std::vector<int>>& members = package.GetComponentMembers();
    for (auto entry = members.begin(); entry != members.end(); ++entry)
        digest.Add(entry.key()).AddList(entry.value());
    return digest.Result();
}

QByteArray ReadRelief(const QString& path)
{
    // A damaged header may ask for more than a test should take; larger pictures have tests of their own.
    const QSize size = QImageReader(path).size();
    if (qAbs(qint64(size.width()) * size.height()) > 1000000)
        return {};
    return DigestOfMesh(WithoutMemory::LeavesTheMesh, [&](Mesh& mesh) {
        return ImageFile::LoadFile(path, mesh, 10, 7.5f, 1, true, 0.5f, 3.1f, 90);
    });
}

QByteArray ReadTexture(const QString& path)
{
    TextureFile texture = TextureOf(RandomPicture(2, 2));
    const bool isLoaded = texture.LoadFile(path);
    EXPECT_EQ(isLoaded, !texture.GetImage().isNull());
    if (!isLoaded)
        return {};
    Digest digest;
    digest.Add(texture.getTextureName()).Add(texture.GetPatternID());
    MeshTextureInfo info;
    EXPECT_TRUE(texture.getTextureInfo(info, 0));
    const MeshMaterialParameters& parameters = texture.GetParameters();
    digest.Add(info.pixels).Add(parameters.wrapS).Add(parameters.wrapT);
    digest.Add(parameters.borderColor.x).Add(parameters.borderColor.y);
    digest.Add(parameters.borderColor.z).Add(parameters.borderColor.w);
    const MeshMaterialMatrix& matrix = parameters.matrix;
    for (const Vector3D<double>& values : {matrix.translation, matrix.rotation, matrix.repeat})
        digest.Add(values.x).Add(values.y).Add(values.z);
    for (int i = 0; i < 16; ++i)
        digest.Add(matrix.matrix.get(i / 4, i % 4));
    return digest.Result();
}

QByteArray ReadPaths(const QString& path)
{
    DXFPathFile::Paths paths = {{1, {}}};
    std::map<int, QString> names = {{1, {}}};
    bool isLoaded = false;
    try {
        isLoaded = DXFPathFile::ReadDXFPathFile(paths, names, path);
    } catch (const std::bad_alloc&) {
        EXPECT_TRUE(paths.empty() && names.empty());
        throw;
    }
    if (!isLoaded) {
        EXPECT_TRUE(paths.empty() && names.empty());
        return {};
    }
    Digest digest;
    for (const auto& [id, contours] : paths) {
        digest.Add(id).Add(names.at(id)).Add(contours.size());
        for (const DXFPathFile::Contour& contour : contours)
            digest.AddList(contour);
    }
    return digest.Result();
}

QByteArray ReadCad(const QString& path)
{
    std::vector<Mesh*> meshes;
    const bool isLoaded = STEPAndIGESFile::LoadFile(path, meshes, 1, 20, false);
    Digest digest;
    for (const Mesh* owned : meshes) {
        const std::unique_ptr<const Mesh> mesh(owned);
        digest.Add(DigestOf(*mesh));
    }
    return isLoaded ? digest.Result() : QByteArray();
}

// ---- samples of what the library does not write

constexpr char kLibrary[] = "newmtl oak\nKd 0.6 0.4 0.2\nNs 12.5\nd 0.875\nmap_Kd wood 1.png\n"
                            "newmtl brass\nKa 0.1 0.1 0\nKs 1 1 0.5\nillum 2\nmap_Bump -bm 0.5 wood 1.png\n";
constexpr char kModel[] =
    "mtllib library.mtl\nv 0 0 0\nv 1.5 0 0\nv 0 1.25 0 \nv 0 0 -0.7e1\nv 2 4 6 2\nvt 0 0\nvt 1 0\nvt 0.5 1\n"
    "usemtl oak\nf 1/1 3/3 2/2\nf 1/1 2/2 4/3\nusemtl brass\nf 1 4 3\nf 2 3 4 5\n";

void WriteLibrary(const QString& path)
{
    WriteBytes(path, kLibrary);
    WriteBytes(QFileInfo(path).dir().filePath(QStringLiteral("wood 1.png")),
               Encoded(RandomPicture(3, 4), "PNG"));
}

void WriteModelWithLibrary(const QString& path)
{
    WriteBytes(path, kModel);
    WriteLibrary(QFileInfo(path).dir().filePath(QStringLiteral("library.mtl")));
}

void WriteStepSample(const QString& path)
{
    EXPECT_TRUE(WriteSTEP(path, {MakeSampleParts().pin}));
}

void WriteIgesSample(const QString& path)
{
    EXPECT_TRUE(WriteIGES(path, {MakeSampleParts().sheet}));
}

std::vector<Reader> WithCad(std::vector<Reader> readers)
{
    readers.push_back({"Step", "model.step", Work::OpenCascade, WriteStepSample, ReadCad});
    readers.push_back({"Iges", "model.iges", Work::OpenCascade, WriteIgesSample, ReadCad});
    return readers;
}

} // namespace

const std::vector<Reader>& Readers()
{
    static const std::vector<Reader> kReaders = {
        {"BinaryStl", "model.stl", Work::Own, Sample<WriteBinarySTL>, ReadSTL},
        {"TextStl", "model.stl", Work::Own, Sample<WriteTextSTL>, ReadSTL},
        {"Obj", "model.obj", Work::Own, WriteModelWithLibrary, ReadOBJ},
        {"Mtl", "library.mtl", Work::Own, WriteLibrary, ReadMTL},
        {"ThreeMf", "model.3mf", Work::Own, Sample<Write3MF>, Read3MF},
        {"ReliefOfPng", "picture.png", Work::QtPictures, WritePicture, ReadRelief},
        {"ReliefOfJpg", "picture.jpg", Work::QtPictures, WritePicture, ReadRelief},
        {"ReliefOfBmp", "picture.bmp", Work::QtPictures, WritePicture, ReadRelief},
        {"ReliefOfTiff", "picture.tiff", Work::QtPictures, WritePicture, ReadRelief},
        {"Texture", "wood.texture", Work::Own, Sample<WriteTexture>, ReadTexture},
        {"Path", "cut.path", Work::Own, Sample<WritePaths>, ReadPaths},
    };
    return kReaders;
}

const std::vector<Reader>& AllReaders()
{
    static const std::vector<Reader> kReaders = WithCad(Readers());
    return kReaders;
}

const std::vector<Writer>& Writers()
{
    static const std::vector<Writer> kWriters = {
        {"BinaryStl", "model.stl", WriteBinarySTL},
        {"TextStl", "model.stl", WriteTextSTL},
        {"Obj", "model.obj", WriteOBJ},
        {"ThreeMf", "model.3mf", Write3MF},
        {"Texture", "wood.texture", WriteTexture},
        {"Path", "cut.path", WritePaths},
    };
    return kWriters;
}

const Reader& ReaderNamed(const char* name)
{
    const auto isNamed = [name](const Reader& reader) { return std::strcmp(reader.name, name) == 0; };
    const auto reader = std::find_if(AllReaders().begin(), AllReaders().end(), isNamed);
    if (reader == AllReaders().end())
        throw std::out_of_range(name);
    return *reader;
}

void PrintTo(const Reader& reader, std::ostream* stream)
{
    *stream << reader.name;
}

void PrintTo(const Writer& writer, std::ostream* stream)
{
    *stream << writer.name;
}

} // namespace test
