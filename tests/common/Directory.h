#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace test {

/// A directory of its own for the files of one test.
class Directory {
public:
    QString Path(const QString& name) const { return m_directory.filePath(name); }

    QString Write(const QByteArray& bytes, const QString& name = QStringLiteral("model")) const
    {
        QFile file(Path(name));
        // A new file each time: some file systems write a truncated one out to the disk when it is closed.
        file.remove();
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return Path(name);
    }

    static QByteArray Read(const QString& path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

private:
    QTemporaryDir m_directory;
};

} // namespace test
