#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <QBuffer>
#include <QByteArray>
#include <QImageReader>
#include <QJsonDocument>
#include <QJsonObject>

#include "fileformat/texture/TextureFile.h"
#include "fuzz/Require.h"

// TextureFile::LoadFromJsonBuffer over any bytes, compared with loading the object that Qt parses from them.
// What was loaded is saved, and must load and be saved again as the same.

namespace {

using fuzz::Require;

// Pictures of a gigabyte are allowed and would take all the time.
bool HasLargePicture(const QJsonDocument& document)
{
    const QJsonValue text = document.object().value(QStringLiteral("image_data"));
    QByteArray picture = QByteArray::fromBase64(text.toString().toLatin1());
    QBuffer file(&picture);
    const QSize size = QImageReader(&file).size();
    return std::abs(qint64(size.width()) * size.height()) > 1 << 20;
}

QByteArray SavedBytes(const TextureFile& texture)
{
    QByteArray bytes;
    texture.GetSaveBuffer(bytes);
    return bytes;
}

} // namespace

// Qt's parser loses an array or object whose key comes a second time; nothing of ours is made in there.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libQt5Core";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (HasLargePicture(document))
        return 0;
    TextureFile texture;
    const bool isLoaded = texture.LoadFromJsonBuffer(bytes);
    Require(isLoaded == !texture.GetImage().isNull());
    Require(!isLoaded || texture.GetImage().format() == QImage::Format_RGB32);
    if (texture.getTextureName().isEmpty()) // no document
        return 0;
    const QByteArray saved = SavedBytes(texture);
    TextureFile parsed;
    Require(parsed.LoadFromJsonObject(document.object()) == isLoaded);
    Require(SavedBytes(parsed) == saved);
    TextureFile again;
    Require(again.LoadFromJsonBuffer(saved) == isLoaded);
    Require(again.GetImage() == texture.GetImage());
    Require(SavedBytes(again) == saved);
    return 0;
}
