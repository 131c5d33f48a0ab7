#pragma once

#include <QByteArray>
#include <QImage>
#include <QImageIOPlugin>
#include <QSize>

namespace test {

/// A picture as no format of Qt's has it: what its file tells ahead of the pixels, and what becomes of it.
struct OddPicture {
    QSize announcedSize; ///< QSize(): not told
    QSize size;          ///< empty: the picture loads and is null
    QImage::Format format = QImage::Format_RGB32;
    bool loads = true;
};

/// The bytes of a file that holds such a picture.
QByteArray OddPictureFile(const OddPicture& picture);

/// How often such pictures were decoded so far.
int DecodedOddPictures();

} // namespace test

/// Reads odd pictures; black ones.
class OddPicturePlugin : public QImageIOPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QImageIOHandlerFactoryInterface_iid FILE "OddPicture.json")

public:
    Capabilities capabilities(QIODevice* device, const QByteArray& format) const override;
    QImageIOHandler* create(QIODevice* device, const QByteArray& format) const override;
};
