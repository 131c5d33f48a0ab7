#include "apps/krmodel/PngFile.h"

#include <QFile>

#include "apps/krmodel/Failure.h"

namespace krmodel {

void RequirePngName(const QString& fileName)
{
    if (!fileName.endsWith(QStringLiteral(".png"), Qt::CaseInsensitive))
        throw Failure(ExitCode::Usage, fileName + QStringLiteral(": the picture's name must end in .png"));
}

void WritePng(const PendingFile& output, const QByteArray& png)
{
    QFile file(output.GetName());
    // Unbuffered, so that a full disk shows in the result of the write.
    const bool isWritten = !png.isEmpty() && file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
                           file.write(png) == png.size();
    if (!isWritten)
        throw Failure(ExitCode::WriteFailed,
                      output.GetTarget() + QStringLiteral(": cannot write: ") + file.errorString());
    file.close();
    output.Commit();
}

} // namespace krmodel
