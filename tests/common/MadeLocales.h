#pragma once

#include <vector>

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include "tests/common/EnvironmentVariable.h"

namespace test {

/// Locales of our own making, since a machine need not have any but C. The C library finds them as long as
/// this lives.
class MadeLocales {
public:
    /// @param names  such as "de_DE.UTF-8"; of that encoding
    explicit MadeLocales(const std::vector<const char*>& names)
    {
        for (const char* const name : names) {
            const QString locale = QString::fromLatin1(name);
            // Warns of what the sources lack and ends with 1 even if all is well.
            QProcess::execute(QStringLiteral("localedef"),
                              {QStringLiteral("--quiet"), QStringLiteral("-i"),
                               locale.section(QLatin1Char('.'), 0, 0), QStringLiteral("-f"),
                               QStringLiteral("UTF-8"), m_directory.filePath(locale)});
        }
    }

private:
    QTemporaryDir m_directory;
    EnvironmentVariable m_path{"LOCPATH", m_directory.path().toUtf8()};
};

} // namespace test
