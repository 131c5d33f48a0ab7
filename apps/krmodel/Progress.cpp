#include "apps/krmodel/Progress.h"

#include <algorithm>
#include <utility>

#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include "apps/krmodel/Formats.h"
#include "apps/krmodel/Texts.h"

namespace krmodel {

namespace {

/// What is through sooner shows nothing.
constexpr qint64 kPatienceMs = 300;

bool FindFile(const QString& name, struct stat& file)
{
    return stat(QFile::encodeName(name).constData(), &file) == 0 && S_ISREG(file.st_mode);
}

/// Where an open file stands, as the system tells: "pos:	4096" in its first line.
qint64 PositionIn(const QString& descriptorInfo)
{
    QFile info(descriptorInfo);
    return info.open(QIODevice::ReadOnly) ? info.readLine().mid(4).trimmed().toLongLong() : 0;
}

QString SizeText(qint64 bytes)
{
    return QLocale(QLocale::C).formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

QString StageText(Stage stage)
{
    switch (stage) {
    case Stage::Drawing:
        return QStringLiteral("drawing");
    case Stage::Writing:
        return QStringLiteral("writing");
    case Stage::Comparing:
        return QStringLiteral("reading what was written");
    default:
        return QStringLiteral("working");
    }
}

/// What a reader does once it has read the file.
QString BuildingText(const QString& fileName)
{
    const Format* const format = FindFormat(fileName);
    return format && format->isTessellated ? QStringLiteral("read, tessellating")
                                           : QStringLiteral("read, building");
}

} // namespace

std::optional<qint64> BytesRead(pid_t process, const QString& fileName)
{
    struct stat file = {}, open = {};
    if (!FindFile(fileName, file))
        return std::nullopt;
    std::optional<qint64> furthest;
    const QString place = QStringLiteral("/proc/%1/").arg(process);
    for (const QString& descriptor : QDir(place + QStringLiteral("fd")).entryList(QDir::Files | QDir::System))
        if (FindFile(place + QStringLiteral("fd/") + descriptor, open) && open.st_ino == file.st_ino &&
            open.st_dev == file.st_dev)
            furthest =
                std::max(furthest.value_or(0), PositionIn(place + QStringLiteral("fdinfo/") + descriptor));
    return furthest;
}

Progress::Progress(std::vector<QString> inputs)
    : m_inputs(std::move(inputs)), m_stages(m_inputs.size()), m_nextLookMs(kPatienceMs)
{
    m_clock.start();
}

void Progress::Look(const std::vector<JobAtWork>& atWork, size_t endedCount)
{
    const qint64 now = m_clock.elapsed();
    for (const JobAtWork& job : atWork)
        m_seen.try_emplace(job.index, Seen{now, false});
    if (now < m_nextLookMs || atWork.empty())
        return;
    m_nextLookMs = now + Onlooker::kLookIntervalMs;
    const JobAtWork& first = atWork.front();
    m_line.Show(Counts(atWork.size(), endedCount) + NameText(QFileInfo(m_inputs[first.index]).fileName()) +
                QStringLiteral(": ") + StateOf(first));
}

/// Nothing when there is one job alone.
QString Progress::Counts(size_t atWorkCount, size_t endedCount) const
{
    if (m_inputs.size() == 1)
        return {};
    const QString ended = QStringLiteral("%1 of %2 files done").arg(endedCount).arg(m_inputs.size());
    const QString atWork = atWorkCount == 1 ? QString() : QStringLiteral(", %1 at work").arg(atWorkCount);
    return ended + atWork + QStringLiteral("; ");
}

QString Progress::StateOf(const JobAtWork& job)
{
    const Stage stage = m_stages.Get(job.index);
    return stage == Stage::Loading ? LoadingState(job) : StageText(stage) + SecondsOf(job);
}

QString Progress::LoadingState(const JobAtWork& job)
{
    const QString& input = m_inputs[job.index];
    Seen& seen = m_seen[job.index];
    const std::optional<qint64> bytes = BytesRead(job.process, input);
    const qint64 size = QFileInfo(input).size();
    seen.wasOpen = seen.wasOpen || bytes;
    if (bytes && *bytes < size)
        return QStringLiteral("%1 % of %2 read").arg(*bytes * 100 / size).arg(SizeText(size));
    return (seen.wasOpen ? BuildingText(input) : QStringLiteral("reading")) + SecondsOf(job);
}

/// Since the job began, where there is no better number.
QString Progress::SecondsOf(const JobAtWork& job) const
{
    return QStringLiteral(", %1 s").arg((m_clock.elapsed() - m_seen.at(job.index).beginMs) / 1000);
}

} // namespace krmodel
