#include "tests/image/PicturePlugin.h"

#include <atomic>
#include <memory>

#include <QDataStream>
#include <QImageIOHandler>
#include <QtPlugin>

Q_IMPORT_PLUGIN(OddPicturePlugin)

namespace {

const QByteArray kMagic = "an odd picture\n";
std::atomic<int> decodedCount{0};

class OddPictureHandler : public QImageIOHandler {
public:
    explicit OddPictureHandler(QIODevice* device)
    {
        setDevice(device);
        QDataStream stream(device->peek(1000).mid(kMagic.size()));
        int format = 0;
        stream >> m_picture.announcedSize >> m_picture.size >> format >> m_picture.loads;
        m_picture.format = static_cast<QImage::Format>(format);
    }
    bool canRead() const override { return true; }
    bool read(QImage* image) override
    {
        ++decodedCount;
        *image = QImage(m_picture.size, m_picture.format);
        image->fill(0U);
        return m_picture.loads;
    }
    bool supportsOption(ImageOption option) const override
    {
        return option == Size && m_picture.announcedSize != QSize();
    }
    QVariant option(ImageOption) const override { return m_picture.announcedSize; }

private:
    test::OddPicture m_picture;
};

} // namespace

QByteArray test::OddPictureFile(const OddPicture& picture)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << picture.announcedSize << picture.size << static_cast<int>(picture.format) << picture.loads;
    return kMagic + bytes;
}

int test::DecodedOddPictures()
{
    return decodedCount;
}

QImageIOPlugin::Capabilities OddPicturePlugin::capabilities(QIODevice* device, const QByteArray&) const
{
    return device && device->isReadable() && device->peek(kMagic.size()) == kMagic ? CanRead : Capabilities();
}

QImageIOHandler* OddPicturePlugin::create(QIODevice* device, const QByteArray&) const
{
    return std::make_unique<OddPictureHandler>(device).release();
}
