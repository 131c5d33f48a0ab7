#pragma once

#include <clocale>

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "tests/common/EnvironmentVariable.h"

namespace test {

/// The C library writes numbers with a comma as long as this lives.
class GermanLocale {
public:
    GermanLocale()
    {
        // A locale of our own making, since a machine need not have any but C.
        const QString target = m_directory.filePath(QStringLiteral("de_DE.UTF-8"));
        QProcess::execute(QStringLiteral("localedef"),
                          {QStringLiteral("-i"), QStringLiteral("de_DE"), QStringLiteral("-f"),
                           QStringLiteral("UTF-8"), target});
        EXPECT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
        EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    }
    ~GermanLocale() { std::setlocale(LC_ALL, "C"); }
    GermanLocale(const GermanLocale&) = delete;
    GermanLocale& operator=(const GermanLocale&) = delete;

private:
    QTemporaryDir m_directory;
    EnvironmentVariable m_locales{"LOCPATH", m_directory.path().toUtf8()};
};

} // namespace test
