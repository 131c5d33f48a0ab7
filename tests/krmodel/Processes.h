#pragma once

#include <vector>

#include <sys/types.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include "tests/krmodel/ProgramSupport.h"

/// Processes as the system tells of them.
namespace test {

/// Asks until the answer is yes. @return false when it stays no for a minute
template<class Question>
bool WaitUntil(Question question)
{
    constexpr qint64 kMinute = 60'000;
    constexpr useconds_t kPause = 2'000;
    QElapsedTimer clock;
    clock.start();
    while (!question()) {
        if (clock.elapsed() > kMinute)
            return false;
        usleep(kPause);
    }
    return true;
}

inline QByteArray TextOfProcess(pid_t process, const char* fileName)
{
    QFile file(QStringLiteral("/proc/%1/%2").arg(process).arg(QLatin1String(fileName)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// "pid (name) state parent ..."
inline pid_t ParentOf(pid_t process)
{
    const QByteArray text = TextOfProcess(process, "stat");
    return text.mid(text.lastIndexOf(')') + 2).split(' ').value(1).toInt();
}

inline std::vector<pid_t> ChildrenOf(pid_t parent)
{
    std::vector<pid_t> children;
    for (const QString& name : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        const pid_t process = name.toInt();
        if (process > 0 && ParentOf(process) == parent)
            children.push_back(process);
    }
    return children;
}

/// A run of the program that has not ended.
class RunningProgram {
public:
    RunningProgram(const QStringList& arguments, const QString& directory)
    {
        m_process.setWorkingDirectory(directory);
        m_process.start(QStringLiteral(KRMODEL_PROGRAM), arguments);
        EXPECT_TRUE(m_process.waitForStarted(-1));
    }

    pid_t GetId() const { return pid_t(m_process.processId()); }

    /// Waits until so many children are there.
    std::vector<pid_t> WaitForChildren(size_t count) const
    {
        std::vector<pid_t> children;
        EXPECT_TRUE(WaitUntil([&] {
            children = ChildrenOf(GetId());
            return children.size() == count;
        })) << children.size();
        return children;
    }

    void WaitForOutput() { EXPECT_TRUE(m_process.waitForReadyRead(-1)); }

    ProgramRun WaitForEnd()
    {
        EXPECT_TRUE(m_process.waitForFinished(-1));
        const bool isByItself = m_process.exitStatus() == QProcess::NormalExit;
        return {isByItself ? m_process.exitCode() : -1, QString::fromUtf8(m_process.readAllStandardOutput()),
                QString::fromUtf8(m_process.readAllStandardError())};
    }

private:
    QProcess m_process;
};

} // namespace test
