#include "tests/obj/PlainObjReader.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include "core/utility/Utility.h"

namespace test {

namespace {

constexpr int kLongestLine = 1'048'575;

using Materials = std::vector<MeshMaterialInfo>;

bool Is(const QString& word, const char* keyword)
{
    return word == QLatin1String(keyword);
}

QStringList Words(const QString& line)
{
    return line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

// A pipe would wait for somebody to write into it.
bool Open(QFile& file)
{
    return QFileInfo(file.fileName()).isFile() && file.open(QIODevice::ReadOnly | QIODevice::Text);
}

void TakeVertex(const QStringList& words, PlainObj& obj)
{
    double x = Utility::ConvertStringToDoubleValue(words[1]);
    double y = Utility::ConvertStringToDoubleValue(words[2]);
    double z = Utility::ConvertStringToDoubleValue(words[3]);
    if (words.size() == 5) {
        const double w = Utility::ConvertStringToDoubleValue(words[4]);
        if (std::abs(w) > 1e-6) {
            x /= w;
            y /= w;
            z /= w;
        }
    }
    obj.vertices.emplace_back(float(x), float(y), float(z));
}

void TakeTexCoord(const QStringList& words, PlainObj& obj)
{
    const double u = Utility::ConvertStringToDoubleValue(words[1]);
    const double v = Utility::ConvertStringToDoubleValue(words[2]);
    obj.texCoords.emplace_back(float(u), float(v));
}

int FromZero(int index)
{
    return index == std::numeric_limits<int>::min() ? index : index - 1;
}

// How many triangles the fan has.
int AppendFan(const std::vector<int>& indices, std::vector<TriangleFace>& faces)
{
    for (std::size_t j = 2; j < indices.size(); ++j)
        faces.emplace_back(FromZero(indices[0]), FromZero(indices[j - 1]), FromZero(indices[j]));
    return std::max(int(indices.size()) - 2, 0);
}

void CountInGroup(MeshTextureGroup& group, int newFaces, std::size_t facesNow)
{
    if (group.firstFaceIndex < 0) {
        group.firstFaceIndex = int(facesNow) - newFaces;
        group.faceCount = newFaces;
    } else {
        group.faceCount += newFaces;
    }
}

void TakeFace(const QStringList& words, PlainObj& obj)
{
    std::vector<int> vertexIndices, textureIndices;
    for (const QString& corner : words.mid(1)) {
        const QString doubleSlash = QStringLiteral("//");
        const bool isWithoutTexture = corner.contains(doubleSlash);
        std::vector<QString> parts;
        Utility::SplitString(parts, corner, isWithoutTexture ? doubleSlash : QStringLiteral("/"));
        vertexIndices.push_back(parts[0].toInt());
        if (!isWithoutTexture && parts.size() >= 2)
            textureIndices.push_back(parts[1].toInt());
    }
    const int newFaces = AppendFan(vertexIndices, obj.faces);
    const int newTextureFaces = AppendFan(textureIndices, obj.textureFaces);
    if (obj.groups.empty())
        return;
    if (newTextureFaces > 0)
        CountInGroup(obj.groups.back(), newTextureFaces, obj.textureFaces.size());
    else
        CountInGroup(obj.groups.back(), newFaces, obj.faces.size());
}

void TakeUsemtl(const QStringList& words, PlainObj& obj)
{
    obj.groups.emplace_back();
    obj.groups.back().material.texCoordSet = 0;
    obj.groups.back().material.name = words[1].toStdString();
}

void GiveMaterials(std::vector<MeshTextureGroup>& groups, const Materials& materials)
{
    for (MeshTextureGroup& group : groups) {
        for (const MeshMaterialInfo& material : materials) {
            if (material.name == group.material.name) {
                group.material = material;
                break;
            }
        }
    }
}

void TakeColor(const QStringList& words, MeshMaterialInfo& material)
{
    const double r = Utility::ConvertStringToDoubleValue(words[1]);
    const double g = Utility::ConvertStringToDoubleValue(words[2]);
    const double b = Utility::ConvertStringToDoubleValue(words[3]);
    const Vector3D<float> color = {float(r), float(g), float(b)};
    if (Is(words[0], "Ka"))
        material.setAmbient(color);
    else if (Is(words[0], "Kd"))
        material.setDiffuse(color);
    else if (Is(words[0], "Ks"))
        material.setSpecular(color);
    else if (Is(words[0], "Ke"))
        material.setEmissive(color);
}

void TakeScalar(const QStringList& words, MeshMaterialInfo& material)
{
    const auto value = float(Utility::ConvertStringToDoubleValue(words[1]));
    if (Is(words[0], "Ns"))
        material.specularExponent = value;
    else if (Is(words[0], "Ni"))
        material.refractionIndex = value;
    else if (Is(words[0], "d"))
        material.opacity = value;
    else if (Is(words[0], "illum"))
        material.illum = Utility::ConvertStringToIntValue(words[1]);
}

void TakeMap(const QStringList& words, const QString& directory, int option, MeshMaterialInfo& material)
{
    if (Is(words[0], "map_Kd"))
        material.diffuseTexture.load(words, directory, option);
    else if (Is(words[0], "map_Ke"))
        material.emissiveTexture.load(words, directory, option);
    else if (Is(words[0], "map_d"))
        material.opacityTexture.load(words, directory, option);
    else if (Is(words[0], "map_Bump") || Is(words[0], "bump"))
        material.bumpTexture.load(words, directory, option);
}

} // namespace

bool ReadPlainLine(QFile& file, QString& line)
{
    if (file.atEnd())
        return false;
    QByteArray bytes;
    bool isJoined = false;
    char previous = 0;
    while (!file.atEnd()) {
        char byte = 0;
        if (file.read(&byte, 1) != 1 || byte == 0)
            break;
        if (byte == '\\') {
            isJoined = true;
            previous = byte;
            continue;
        }
        if (byte == '\n') {
            if (!isJoined)
                break;
            isJoined = false;
            continue;
        }
        if (byte >= 0x21 && byte <= 0x7e) {
            isJoined = false;
            if (previous == '\\')
                bytes.append('\\');
        }
        bytes.append(byte);
        if (bytes.size() > kLongestLine)
            return false;
        previous = byte;
    }
    line = QString::fromUtf8(bytes);
    return true;
}

std::optional<PlainObj> ReadPlainObj(const QString& fileName, int textureLoadOption)
{
    QFile file(fileName);
    if (!Open(file))
        return std::nullopt;
    PlainObj obj;
    std::optional<Materials> materials;
    QString line;
    while (ReadPlainLine(file, line)) {
        if (line.startsWith(QLatin1Char('#')))
            continue;
        const QStringList words = Words(line);
        if (words.size() == 2 && Is(words[0], "usemtl"))
            TakeUsemtl(words, obj);
        else if (words.size() == 2 && Is(words[0], "mtllib"))
            materials = ReadPlainMtl(Utility::GetFilePath(fileName) + words[1], textureLoadOption);
        else if (words.size() >= 4 && Is(words[0], "v"))
            TakeVertex(words, obj);
        else if (words.size() >= 3 && Is(words[0], "vt"))
            TakeTexCoord(words, obj);
        else if (words.size() >= 4 && Is(words[0], "f"))
            TakeFace(words, obj);
    }
    if (materials)
        GiveMaterials(obj.groups, *materials);
    return obj;
}

std::optional<Materials> ReadPlainMtl(const QString& fileName, int textureLoadOption)
{
    QFile file(fileName);
    if (!Open(file))
        return std::nullopt;
    Materials materials;
    QString line;
    while (ReadPlainLine(file, line)) {
        if (line.startsWith(QLatin1Char('#')))
            continue;
        const QStringList words = Words(line.trimmed());
        if (words.size() == 2 && Is(words[0], "newmtl")) {
            materials.emplace_back();
            materials.back().name = words[1].toStdString();
            continue;
        }
        if (words.size() < 2 || materials.empty())
            continue;
        if (words.size() == 2)
            TakeScalar(words, materials.back());
        if (words.size() == 4)
            TakeColor(words, materials.back());
        TakeMap(words, Utility::GetFilePath(fileName), textureLoadOption, materials.back());
    }
    return materials;
}

} // namespace test
