#pragma once

#include <ostream>

#include <QProcess>
#include <QString>
#include <QStringList>

/// Lets test messages show text instead of bytes.
inline void PrintTo(const QString& text, std::ostream* stream)
{
    *stream << text.toStdString();
}

struct ProgramRun {
    int exitCode = -1; ///< -1 when the program did not start or did not end by itself
    QString output;
    QString errors;
};

/// Runs a program to its end. @param environment "NAME=value", added to our own
inline ProgramRun RunProgram(const QString& program, const QStringList& arguments,
                             const QString& directory = {}, const QStringList& environment = {})
{
    QProcess process;
    process.setWorkingDirectory(directory);
    process.setEnvironment(QProcess::systemEnvironment() + environment);
    process.start(program, arguments);
    ProgramRun run;
    if (process.waitForFinished(-1) && process.exitStatus() == QProcess::NormalExit)
        run.exitCode = process.exitCode();
    run.output = QString::fromUtf8(process.readAllStandardOutput());
    run.errors = QString::fromUtf8(process.readAllStandardError());
    return run;
}
