#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QFile>
#include <QString>

#include <string>

#include "tests/common/MessageCounter.h"

inline void WriteFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

inline std::string ReadFile(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll().toStdString();
}
