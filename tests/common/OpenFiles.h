#pragma once

#include <QDir>
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

} // namespace test
