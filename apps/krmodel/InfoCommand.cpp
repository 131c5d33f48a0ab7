#include <cstdio>

#include <QFile>

#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Guard.h"
#include "apps/krmodel/MaterialTable.h"
#include "apps/krmodel/MeshReport.h"
#include "apps/krmodel/ModelFile.h"
#include "apps/krmodel/TextTable.h"
#include "apps/krmodel/Texts.h"

namespace krmodel {

namespace {

QString Seconds(double seconds)
{
    return seconds < 1 ? QString::number(seconds * 1e3, 'f', 1) + QStringLiteral(" ms")
                       : QString::number(seconds, 'f', 2) + QStringLiteral(" s");
}

/// Lets the peak that PeakMemory() reports start anew; without effect where the system does not offer it.
void ResetPeakMemory()
{
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        file.write("5");
}

/// The most memory that the process held, its own code included: "12.3 MiB".
QString PeakMemory()
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("unknown");
    for (const QByteArray& line : file.readAll().split('\n'))
        if (line.startsWith("VmHWM:"))
            return QString::number(line.simplified().split(' ').value(1).toDouble() / 1024, 'f', 1) +
                   QStringLiteral(" MiB");
    return QStringLiteral("unknown");
}

void AddAxis(TextTable& table, const char* name, float minimum, float maximum)
{
    table.AddRow({QLatin1String(name), NumberText(double(minimum)), NumberText(double(maximum)),
                  NumberText(double(maximum) - double(minimum))});
}

void AddBounds(TextTable& table, const MeshBoundingBox& bounds)
{
    if (bounds.isEmpty) {
        table.AddRow({QStringLiteral("bounds"), QStringLiteral("none, no vertex is finite")});
        return;
    }
    table.AddRow({QStringLiteral("bounds"), QStringLiteral("minimum"), QStringLiteral("maximum"),
                  QStringLiteral("size")});
    AddAxis(table, "x", bounds.minimum.x, bounds.maximum.x);
    AddAxis(table, "y", bounds.minimum.y, bounds.maximum.y);
    AddAxis(table, "z", bounds.minimum.z, bounds.maximum.z);
}

QString FormatText(const Format& format, const QString& fileName)
{
    const QString name = QLatin1String(format.name);
    return format.variant ? name + QStringLiteral(", ") + format.variant(fileName) : name;
}

void AddTexture(TextTable& table, const MeshReport& report)
{
    if (report.textureCoordinates + report.textureFaces == 0)
        return;
    const QString remark = report.isTextureGood ? QString() : QStringLiteral(", do not fit the facets");
    table.AddRow({QStringLiteral("texture coordinates"), CountText(report.textureCoordinates)});
    table.AddRow({QStringLiteral("texture faces"), CountText(report.textureFaces) + remark});
}

void PrintReport(const QString& fileName, const LoadedModel& loaded)
{
    const MeshReport report = Measure(loaded.model);
    const QString openEdges =
        report.openEdges == 0 ? QStringLiteral("0, closed") : CountText(report.openEdges);
    TextTable table;
    table.AddRow({QStringLiteral("format"), FormatText(*loaded.format, fileName)});
    table.AddRow({QStringLiteral("facets"), CountText(report.facets)});
    table.AddRow({QStringLiteral("vertices"), CountText(report.vertices)});
    AddTexture(table, report);
    AddBounds(table, report.bounds);
    table.AddRow({QStringLiteral("volume"), NumberText(report.volume)});
    table.AddRow({QStringLiteral("open edges"), openEdges});
    table.AddRow({QStringLiteral("pieces"), CountText(report.pieces)});
    table.AddRow({QStringLiteral("read in"), Seconds(loaded.seconds)});
    table.AddRow({QStringLiteral("peak memory"), PeakMemory()});
    const QString materials = MaterialTable(loaded.model, fileName);
    const QString gap = materials.isEmpty() ? QString() : QStringLiteral("\n");
    std::fputs((fileName + QLatin1Char('\n') + table.ToString() + gap + materials).toUtf8().constData(),
               stdout);
}

} // namespace

ExitCode RunInfo(const Arguments& arguments)
{
    ExitCode firstFailure = ExitCode::Done;
    bool isFirst = true;
    for (const QString& fileName : arguments.inputs) {
        const ExitCode code = Guard([&] {
            ResetPeakMemory();
            const LoadedModel loaded = LoadModel(fileName);
            std::fputs(isFirst ? "" : "\n", stdout);
            isFirst = false;
            PrintReport(fileName, loaded);
            return ExitCode::Done;
        });
        firstFailure = firstFailure == ExitCode::Done ? code : firstFailure;
    }
    return firstFailure;
}

} // namespace krmodel
