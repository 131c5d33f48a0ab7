#include "fileformat/common/PlainFile_p.h"

#include "core/common/FileName_p.h"

namespace kr {

bool OpenForReading(QFile& file)
{
    return IsPlainFile(file.fileName()) && file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

bool OpenForWriting(QFile& file, QIODevice::OpenMode textMode)
{
    const QIODevice::OpenMode mode = QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered;
    return CanNameAFile(file.fileName()) && file.open(mode | textMode);
}

} // namespace kr
