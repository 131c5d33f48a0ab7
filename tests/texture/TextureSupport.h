#pragma once

#include <ostream>

#include <QByteArray>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <QUuid>

#include <gtest/gtest.h>

#include "core/mesh/MeshTextureInfo.h"
#include "fileformat/texture/TextureFile.h"
#include "tests/common/PictureFiles.h"

namespace test {

/// The namespace of host names that RFC 9562 lists.
inline QUuid HostNames()
{
    return QUuid(QStringLiteral("{6ba7b810-9dad-11d1-80b4-00c04fd430c8}"));
}

inline QString Text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

inline MeshTextureInfo InfoOf(const QImage& image, const QString& fileName)
{
    MeshTextureInfo info;
    EXPECT_TRUE(info.load(image, false, false, false, 0));
    info.fileName = fileName;
    return info;
}

inline TextureFile TextureOf(const QImage& image, const QString& fileName = Text("oak.png"),
                             const MeshMaterialParameters& parameters = {})
{
    const MeshTextureInfo info = InfoOf(image, fileName);
    TextureFile texture;
    EXPECT_TRUE(texture.Load(&info, parameters, HostNames()));
    return texture;
}

inline TextureFile TextureOf(const MeshMaterialParameters& parameters)
{
    return TextureOf(RandomPicture(2, 2), Text("oak.png"), parameters);
}

inline QByteArray SavedBytes(const TextureFile& texture)
{
    QByteArray bytes("old");
    texture.GetSaveBuffer(bytes);
    return bytes;
}

inline QJsonObject SavedObject(const TextureFile& texture)
{
    QJsonObject object;
    texture.GetSaveObject(object);
    return object;
}

inline QJsonObject SavedSettings(const TextureFile& texture)
{
    return SavedObject(texture).value(Text("settings")).toObject();
}

inline void ExpectSameParameters(const MeshMaterialParameters& a, const MeshMaterialParameters& b)
{
    EXPECT_EQ(a.wrapS, b.wrapS);
    EXPECT_EQ(a.wrapT, b.wrapT);
    EXPECT_EQ(a.borderColor, b.borderColor);
    EXPECT_EQ(a.matrix.translation, b.matrix.translation);
    EXPECT_EQ(a.matrix.rotation, b.matrix.rotation);
    EXPECT_EQ(a.matrix.repeat, b.matrix.repeat);
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            EXPECT_EQ(a.matrix.matrix.get(row, column), b.matrix.matrix.get(row, column));
}

/// What a new object holds.
inline void ExpectNew(const TextureFile& texture)
{
    EXPECT_EQ(texture.GetPatternID(), QString());
    EXPECT_EQ(texture.getTextureName(), QString());
    EXPECT_TRUE(texture.GetImage().isNull());
    ExpectSameParameters(texture.GetParameters(), MeshMaterialParameters());
}

} // namespace test

/// Lets test messages show text instead of bytes.
inline void PrintTo(const QString& text, std::ostream* stream)
{
    *stream << text.toStdString();
}
