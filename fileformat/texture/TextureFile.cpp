#include "fileformat/texture/TextureFile.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUuid>

#include "core/mesh/MeshTextureInfo.h"
#include "core/utility/Utility.h"
#include "fileformat/texture/Document_p.h"
#include "fileformat/texture/ImageText_p.h"
#include "fileformat/texture/Settings_p.h"

namespace {

const QLatin1String kHeader("header");
const QLatin1String kPatternID("texture_id");
const QLatin1String kTextureName("texture_name");
const QLatin1String kSettings("settings");
const QLatin1String kImageData(kr::texture::kImageDataKey);
const QLatin1String kVersion("version");

constexpr int kVersionNumber = 1;

} // namespace

QString TextureFile::GetSupportedFileExtension()
{
    return QStringLiteral("*.texture");
}

bool TextureFile::IsValidFileExtenson(const QString& extension)
{
    return extension == QLatin1String("texture");
}

bool TextureFile::Load(const MeshTextureInfo* info, const MeshMaterialParameters& parameters,
                       const QUuid& nameSpace)
{
    if (!info || !info->isValidSize())
        return false;
    m_textureName = Utility::GetFileNameNoExtension(info->fileName).trimmed();
    if (m_textureName.isEmpty())
        m_textureName = QStringLiteral("untitled");
    initPatternID(nameSpace);
    m_parameters = parameters;
    m_image = kr::texture::UprightImage(info->pixels, info->width, info->height);
    return !m_image.isNull();
}

void TextureFile::initPatternID(const QUuid& nameSpace)
{
    m_patternID =
        Utility::CreateNewUUIDFromNameSpace(m_textureName, nameSpace).toString(QUuid::WithoutBraces);
}

bool TextureFile::getTextureInfo(MeshTextureInfo& info, int longestSide) const
{
    info.clear();
    info.fileName = m_textureName.isEmpty() ? QStringLiteral("untitled") : m_textureName;
    return info.load(m_image, false, false, false, longestSide);
}

void TextureFile::Reset()
{
    *this = TextureFile();
}

bool TextureFile::SaveFile(const QString& path) const
{
    QJsonObject object;
    GetSaveObject(object);
    return Utility::SaveJsonFile(object, path, QJsonDocument::Indented);
}

void TextureFile::GetSaveBuffer(QByteArray& buffer) const
{
    QJsonObject object;
    GetSaveObject(object);
    Utility::GetJsonBuffer(object, buffer, QJsonDocument::Indented);
}

void TextureFile::GetSaveObject(QJsonObject& object) const
{
    object[kHeader] = QJsonObject{{kPatternID, m_patternID}, {kTextureName, m_textureName}};
    object[kSettings] = kr::texture::SettingsOf(m_parameters);
    object[kImageData] = kr::texture::TextOfImage(m_image);
    object[kVersion] = kVersionNumber;
}

bool TextureFile::LoadFile(const QString& path)
{
    Reset();
    QByteArray bytes;
    int error = Utility::JsonNoError;
    return Utility::LoadJsonBytes(bytes, path, error) && LoadFromDocument(bytes, false);
}

bool TextureFile::LoadFromJsonBuffer(const QByteArray& buffer)
{
    Reset();
    return LoadFromDocument(buffer, true);
}

bool TextureFile::LoadFromJsonObject(const QJsonObject& object)
{
    Reset();
    ReadFields(object);
    m_image = kr::texture::ImageOfText(object[kImageData].toString());
    return !m_image.isNull();
}

bool TextureFile::LoadFromDocument(const QByteArray& bytes, bool acceptsArray)
{
    const kr::texture::Document document = kr::texture::ParseDocument(bytes);
    if (document.json.isNull() || (document.json.isArray() && !acceptsArray))
        return false;
    if (!document.pictureFile)
        return LoadFromJsonObject(document.json.object());
    ReadFields(document.json.object());
    m_image = kr::texture::ImageOfFile(*document.pictureFile);
    return !m_image.isNull();
}

void TextureFile::ReadFields(const QJsonObject& object)
{
    const QJsonObject header = object[kHeader].toObject();
    m_patternID = header[kPatternID].toString();
    m_textureName = header[kTextureName].toString().trimmed();
    if (m_textureName.isEmpty())
        m_textureName = QStringLiteral("untitiled"); // Spelling is part of the interface.
    kr::texture::ReadSettings(object[kSettings].toObject(), m_parameters);
    m_parameters.matrix.updateMatrix();
}
