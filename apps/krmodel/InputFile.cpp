#include "apps/krmodel/InputFile.h"

#include <QFile>
#include <QFileInfo>

#include "apps/krmodel/Failure.h"

namespace krmodel {

void RequireReadable(const QString& fileName)
{
    // An error that begins with no name would tell nobody what is wrong.
    if (fileName.isEmpty())
        throw Failure(ExitCode::CannotOpen, QStringLiteral("cannot open a file without a name"));
    QFile file(fileName);
    // Qt opens a directory without complaint and fails at the first read.
    if (QFileInfo(file).isDir())
        throw Failure(ExitCode::CannotOpen, fileName + QStringLiteral(": cannot open, it is a directory"));
    if (!file.open(QIODevice::ReadOnly))
        throw Failure(ExitCode::CannotOpen,
                      fileName + QStringLiteral(": cannot open: ") + file.errorString());
}

} // namespace krmodel
