#pragma once

#include <QFile>
#include <QString>

#include <gtest/gtest.h>

namespace test {

/// Makes a link that opens as a plain file, and reading from it fails.
inline void LinkToAnUnreadableFile(const QString& path)
{
    ASSERT_TRUE(QFile::link(QStringLiteral("/proc/self/mem"), path));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
    char byte = 0;
    ASSERT_EQ(file.read(&byte, 1), -1);
}

} // namespace test
