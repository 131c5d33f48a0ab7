#pragma once

#include <QDir>
#include <QFileInfo>
#include <QString>
#include <QStringList>

namespace test {

/// How many files the program has open.
inline int OpenFiles()
{
    return QDir(QStringLiteral("/proc/self/fd"))
        .entryList(QDir::NoDotAndDotDot | QDir::Files | QDir::System)
        .size();
}

/// Whether the program has a file open that is there, by whatever name. Other than a count of files this says
/// nothing of the threads and libraries that a first use brings along.
inline bool IsOpen(const QString& path)
{
    const QString target = QFileInfo(path).canonicalFilePath();
    const QDir descriptors(QStringLiteral("/proc/self/fd"));
    for (const QFileInfo& descriptor :
         descriptors.entryInfoList(QDir::NoDotAndDotDot | QDir::Files | QDir::System)) {
        if (!target.isEmpty() && descriptor.symLinkTarget() == target)
            return true;
    }
    return false;
}

} // namespace test
