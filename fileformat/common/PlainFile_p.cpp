#include "fileformat/common/PlainFile_p.h"

#include <QFileInfo>

namespace kr {

bool OpenForReading(QFile& file)
{
    return QFileInfo(file.fileName()).isFile() && file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

bool OpenForWriting(QFile& file, QIODevice::OpenMode textMode)
{
    // Qt would print about an empty name.
    const QIODevice::OpenMode mode = QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered;
    return !file.fileName().isEmpty() && file.open(mode | textMode);
}

} // namespace kr
