#include "apps/krmodel/PendingFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include "apps/krmodel/Failure.h"

namespace krmodel {

namespace {

QString SystemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

/// Where links lead to, also when there is nothing yet.
QString PlaceOf(const QString& target)
{
    const QFileInfo info(target);
    if (!info.isSymLink())
        return info.absoluteFilePath();
    const QString canonical = info.canonicalFilePath();
    return canonical.isEmpty() ? info.symLinkTarget() : canonical;
}

bool IsPlainOrMissing(const QString& place)
{
    const QFileInfo info(place);
    return !info.exists() || info.isFile();
}

/// A name that nobody else has, not even on another computer that writes into the same directory.
QString FreshName(const QString& directory, const QString& suffix)
{
    const QString token = QString::number(QRandomGenerator::system()->generate64(), 16);
    return QDir(directory).filePath(QStringLiteral(".krmodel-%1.%2").arg(token, suffix));
}

/// An open file, or the error that kept it from being opened.
class Descriptor {
public:
    Descriptor(const QString& fileName, int flags) : m_value(open(QFile::encodeName(fileName), flags)) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool Sync() const { return m_value >= 0 && fsync(m_value) == 0; }
    bool Close()
    {
        const int value = m_value;
        m_value = -1;
        return value < 0 || close(value) == 0;
    }

private:
    int m_value;
};

bool SyncFile(const QString& fileName)
{
    Descriptor file(fileName, O_RDONLY | O_CLOEXEC);
    return file.Sync() && file.Close();
}

/// As the target had them; as the person's mask gives them where there is none.
void KeepRights(const QString& place, const QString& name)
{
    struct stat state = {};
    if (stat(QFile::encodeName(place), &state) == 0)
        // Rights that cannot be carried over are no reason to lose the file.
        static_cast<void>(chmod(QFile::encodeName(name), state.st_mode & 07777));
}

bool IsRenamed(const QString& from, const QString& to)
{
    return std::rename(QFile::encodeName(from), QFile::encodeName(to)) == 0;
}

} // namespace

PendingFile::PendingFile(const QString& target)
    : m_target(target),
      m_place(PlaceOf(target)),
      m_name(FreshName(IsReplaceable() ? QFileInfo(m_place).path() : QDir::tempPath(),
                       QFileInfo(target).suffix()))
{}

bool PendingFile::IsReplaceable() const
{
    return IsPlainOrMissing(m_place);
}

void PendingFile::Fail(const QString& reason) const
{
    throw Failure(ExitCode::WriteFailed, m_target + QStringLiteral(": cannot write: ") + reason);
}

PendingFile PendingFile::WithTarget(const QString& target) const
{
    PendingFile other = *this;
    other.m_target = target;
    other.m_place = PlaceOf(target);
    return other;
}

PendingFile PendingFile::WithName(const QString& name) const
{
    PendingFile other = *this;
    other.m_name = name;
    return other;
}

// The device is unbuffered, so that a full one shows in the result of the write.
void PendingFile::Copy(QFile& to) const
{
    constexpr qint64 kBlockSize = 1 << 20;
    QFile from(m_name);
    if (!from.open(QIODevice::ReadOnly))
        Fail(from.errorString());
    for (QByteArray block = from.read(kBlockSize); !block.isEmpty(); block = from.read(kBlockSize))
        if (to.write(block) != block.size())
            Fail(to.errorString());
}

void PendingFile::CopyToTarget() const
{
    QFile to(m_place);
    if (!to.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        Fail(to.errorString());
    Copy(to);
}

void PendingFile::CopyTo(int descriptor) const
{
    QFile to;
    if (!to.open(descriptor, QIODevice::WriteOnly | QIODevice::Unbuffered))
        Fail(to.errorString());
    Copy(to);
}

void PendingFile::Commit() const
{
    if (!IsReplaceable()) {
        CopyToTarget();
        Discard();
        return;
    }
    KeepRights(m_place, m_name);
    if (!SyncFile(m_name) || !IsRenamed(m_name, m_place))
        Fail(SystemError());
    // The file is in place; that its name outlives a crash of the system is more than some disks offer.
    static_cast<void>(SyncFile(QFileInfo(m_place).path()));
}

void PendingFile::Discard() const
{
    QFile::remove(m_name);
}

} // namespace krmodel
