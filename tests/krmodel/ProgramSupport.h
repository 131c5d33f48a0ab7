#pragma once

#include <initializer_list>

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

/// A file, and how the program ends with it.
struct FailingFile {
    const char* name;
    int exitCode;
    const char* message; ///< the first words behind the file's name
};

using CommandLines = std::initializer_list<const char*>;

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
    /// A file of that size without a block on the disk.
    void WriteHole(const char* name, qint64 size) const
    {
        QFile file(Path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(size));
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

    /// Each line, in which "%1" stands for the file, prints nothing but a sentence that begins so on standard
    /// error, and writes no file.
    void ExpectFailures(std::initializer_list<FailingFile> files, CommandLines lines) const
    {
        const QStringList before = AllFiles();
        for (const auto& [name, exitCode, message] : files)
            for (const char* line : lines) {
                const ProgramRun run = Run(Words(line, QString::fromUtf8(name)));
                EXPECT_EQ(run.exitCode, exitCode) << line << ' ' << name;
                EXPECT_EQ(run.output, QString()) << line << ' ' << name;
                const QString begin = QStringLiteral("krmodel: %1: %2");
                // The PNG library may have said something of its own before.
                EXPECT_TRUE(run.errors.contains(begin.arg(QString::fromUtf8(name), QLatin1String(message))))
                    << run.errors.toStdString();
            }
        EXPECT_EQ(AllFiles(), before);
    }
    /// None of the lines can be understood, and none writes a file.
    void ExpectUsageErrors(CommandLines lines) const
    {
        const QStringList before = AllFiles();
        for (const char* line : lines) {
            const ProgramRun run = Run(line);
            EXPECT_EQ(run.exitCode, Usage) << line;
            EXPECT_EQ(run.output, QString()) << line;
            EXPECT_FALSE(run.errors.isEmpty()) << line;
        }
        EXPECT_EQ(AllFiles(), before);
    }
    /// "%1" stands for outputs that cannot be written: on a full device, and in a directory that is not
    /// there.
    /// @param suffix  of the output
    void ExpectUnwritable(const char* suffix, CommandLines lines) const
    {
        const QString full = QStringLiteral("full.") + QLatin1String(suffix);
        QFile::link(QStringLiteral("/dev/full"), Path(full.toUtf8().constData()));
        for (const char* line : lines)
            for (const QString& output : {full, QStringLiteral("no/such/place.") + QLatin1String(suffix)}) {
                const ProgramRun run = Run(Words(line, output));
                EXPECT_EQ(run.exitCode, WriteFailed) << line << output.toStdString();
                EXPECT_TRUE(run.errors.startsWith(QStringLiteral("krmodel: %1: ").arg(output)))
                    << run.errors.toStdString();
            }
    }

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
