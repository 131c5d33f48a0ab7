#include <map>
#include <string_view>

#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include "core/utility/Utility.h"
#include "fileformat/common/PlainFile_p.h"
#include "fileformat/obj/LineReader_p.h"
#include "fileformat/obj/OBJFile.h"

namespace {

// Loads each picture once, however many statements name it: decoding one takes long, and its pixels may be a
// thousand times as large as its file. Copies share them.
class PictureLoader {
public:
    PictureLoader(const QString& directory, int longestSide)
        : m_directory(directory), m_longestSide(longestSide)
    {}

    void Load(const QStringList& statement, MeshTextureInfo& texture)
    {
        const QString path = MeshTextureInfo::FindFile(statement, m_directory);
        const QString file = QFileInfo(path).canonicalFilePath();
        const auto known = m_pictures.find(file);
        if (file.isEmpty() || known == m_pictures.end()) {
            texture.load(statement, m_directory, m_longestSide);
            if (!file.isEmpty())
                m_pictures.emplace(file, texture);
            return;
        }
        texture = known->second;
        texture.fileName = path;
    }

private:
    QString m_directory;
    int m_longestSide;
    std::map<QString, MeshTextureInfo> m_pictures; // by their canonical paths
};

float ToFloat(const QString& word)
{
    return static_cast<float>(Utility::ConvertStringToDoubleValue(word));
}

struct NumberStatement {
    const char* keyword;
    float MeshMaterialInfo::*field;
};

constexpr NumberStatement kNumberStatements[] = {
    {"Ns", &MeshMaterialInfo::specularExponent},
    {"Ni", &MeshMaterialInfo::refractionIndex},
    {"d", &MeshMaterialInfo::opacity},
};

struct ColorStatement {
    const char* keyword;
    void (MeshMaterialInfo::*set)(Vector3D<float> color);
};

constexpr ColorStatement kColorStatements[] = {
    {"Ka", &MeshMaterialInfo::setAmbient},
    {"Kd", &MeshMaterialInfo::setDiffuse},
    {"Ks", &MeshMaterialInfo::setSpecular},
    {"Ke", &MeshMaterialInfo::setEmissive},
};

struct MapStatement {
    const char* keyword;
    MeshTextureInfo MeshMaterialInfo::*texture;
};

constexpr MapStatement kMapStatements[] = {
    {"map_Kd", &MeshMaterialInfo::diffuseTexture}, {"map_Ke", &MeshMaterialInfo::emissiveTexture},
    {"map_d", &MeshMaterialInfo::opacityTexture},  {"map_Bump", &MeshMaterialInfo::bumpTexture},
    {"bump", &MeshMaterialInfo::bumpTexture},
};

template<class Statement, std::size_t Count>
const Statement* FindStatement(const Statement (&statements)[Count], const QString& keyword)
{
    for (const Statement& statement : statements) {
        if (keyword == QLatin1String(statement.keyword))
            return &statement;
    }
    return nullptr;
}

class MaterialReader {
public:
    MaterialReader(QFile& file, std::vector<MeshMaterialInfo>& materials, int longestSide)
        : m_lines(file),
          m_materials(materials),
          m_pictures(Utility::GetFilePath(file.fileName()), longestSide)
    {}

    void ReadAll()
    {
        std::string_view line;
        while (m_lines.Next(line))
            ReadLine(QString::fromUtf8(line.data(), static_cast<int>(line.size())));
    }

private:
    void ReadLine(const QString& line);
    void ReadStatement(const QStringList& words, MeshMaterialInfo& material);
    static void ReadNumber(const QStringList& words, MeshMaterialInfo& material);
    static void ReadColor(const QStringList& words, MeshMaterialInfo& material);

    kr::obj::LineReader m_lines;
    std::vector<MeshMaterialInfo>& m_materials;
    PictureLoader m_pictures;
};

void MaterialReader::ReadLine(const QString& line)
{
    // Only a mark at the very begin makes a comment; an indented one is a keyword that nobody knows.
    if (line.isEmpty() || line.front() == QLatin1Char('#'))
        return;
    const QStringList words = line.trimmed().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words.size() < 2)
        return;
    if (words.size() == 2 && words.front() == QLatin1String("newmtl"))
        m_materials.emplace_back().name = words[1].toStdString();
    else if (!m_materials.empty())
        ReadStatement(words, m_materials.back());
}

void MaterialReader::ReadStatement(const QStringList& words, MeshMaterialInfo& material)
{
    if (words.size() == 2)
        ReadNumber(words, material);
    if (words.size() == 4)
        ReadColor(words, material);
    if (const MapStatement* const map = FindStatement(kMapStatements, words.front()))
        m_pictures.Load(words, material.*map->texture);
}

void MaterialReader::ReadNumber(const QStringList& words, MeshMaterialInfo& material)
{
    if (const NumberStatement* const number = FindStatement(kNumberStatements, words.front()))
        material.*number->field = ToFloat(words[1]);
    else if (words.front() == QLatin1String("illum"))
        material.illum = Utility::ConvertStringToIntValue(words[1]);
}

void MaterialReader::ReadColor(const QStringList& words, MeshMaterialInfo& material)
{
    if (const ColorStatement* const color = FindStatement(kColorStatements, words.front()))
        (material.*color->set)({ToFloat(words[1]), ToFloat(words[2]), ToFloat(words[3])});
}

} // namespace

bool OBJFile::LoadMTLFile(const QString& fileName, std::vector<MeshMaterialInfo>& materials,
                          int textureLoadOption)
{
    materials.clear();
    QFile file(fileName);
    if (!kr::OpenForReading(file))
        return false;
    MaterialReader(file, materials, textureLoadOption).ReadAll();
    return true;
}
