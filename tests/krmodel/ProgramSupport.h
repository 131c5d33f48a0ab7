#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "tests/common/RunProgram.h"

// The numbers are part of the program's interface.
enum : int {
    Done = 0,
    Usage = 1,
    CannotOpen = 2,
    NotReadable = 3,
    Empty = 4,
    WriteFailed = 5,
    Stopped = 6,
    Interrupted = 130
};

// Corner of axes, of sides 1, outwards.
constexpr char kTetrahedronObj[] = "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf 1 3 2\nf 1 2 4\nf 2 3 4\nf 3 1 4\n";

inline QString Sample(const char* name)
{
    return QStringLiteral(KRCORE_SAMPLES "/") + QLatin1String(name);
}

/// Words separated by blanks; "%1" stands for @p fileName.
inline QStringList Words(const char* line, const QString& fileName = {})
{
    QStringList words = QString::fromUtf8(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return words.replaceInStrings(QStringLiteral("%1"), fileName);
}

/// Runs the program in a directory of the test's own.
class Krmodel : public ::testing::Test {
protected:
    ProgramRun Run(const QStringList& arguments, const QStringList& environment = {}) const
    {
        return RunProgram(QStringLiteral(KRMODEL_PROGRAM), arguments, m_directory.path(), environment);
    }
    ProgramRun Run(const char* line) const { return Run(Words(line)); }
    /// Runs a script of the shell, in which "$0" is the program and "$1" the first argument.
    ProgramRun RunScript(const char* script, const QStringList& arguments = {}) const
    {
        const QStringList line = {QStringLiteral("-c"), QString::fromUtf8(script),
                                  QStringLiteral(KRMODEL_PROGRAM)};
        return RunProgram(QStringLiteral("/bin/sh"), line + arguments, m_directory.path());
    }
    ProgramRun Info(const QString& fileName) const { return Run({QStringLiteral("info"), fileName}); }
    ProgramRun InfoOfSample(const char* name) const { return Info(Sample(name)); }

    QString Path(const char* name) const { return m_directory.filePath(QString::fromUtf8(name)); }
    void CopySample(const char* name, const char* as) const
    {
        EXPECT_TRUE(QFile::copy(Sample(name), Path(as)));
    }
    void Write(const char* name, const QByteArray& bytes) const
    {
        QFile file(Path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
    }
    QByteArray Bytes(const char* name) const
    {
        QFile file(Path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }
    /// Hidden ones too.
    QStringList AllFiles() const
    {
        return QDir(m_directory.path()).entryList(QDir::Files | QDir::System | QDir::Hidden);
    }
    QStringList Files() const { return QDir(m_directory.path()).entryList(QDir::Files | QDir::System); }

private:
    QTemporaryDir m_directory;
};

/// What stands behind a row's name, with single blanks between the cells.
inline QString Cell(const ProgramRun& run, const char* name)
{
    const QRegularExpression row(QStringLiteral("^  %1  +(.*)$").arg(QString::fromUtf8(name)),
                                 QRegularExpression::MultilineOption);
    return row.match(run.output).captured(1).simplified();
}
