#include <algorithm>

#include <QFile>

#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Json.h"
#include "apps/krmodel/MaterialTable.h"
#include "apps/krmodel/MeshReport.h"
#include "apps/krmodel/ObjectTable.h"
#include "apps/krmodel/Picture.h"
#include "apps/krmodel/Placement.h"
#include "apps/krmodel/ReportCommand.h"
#include "apps/krmodel/TextTable.h"
#include "apps/krmodel/Texts.h"

namespace krmodel {

namespace {

QString Seconds(double seconds)
{
    return seconds < 1 ? QString::number(seconds * 1e3, 'f', 1) + QStringLiteral(" ms")
                       : QString::number(seconds, 'f', 2) + QStringLiteral(" s");
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

void AddBounds(TextTable& table, const MeshBoundingBox& bounds, const QString& name)
{
    if (bounds.isEmpty) {
        table.AddRow({name, QStringLiteral("none, no vertex is finite")});
        return;
    }
    table.AddRow({name, QStringLiteral("minimum"), QStringLiteral("maximum"), QStringLiteral("size")});
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

QString UnitText(const Unit& unit)
{
    if (unit.name.isEmpty())
        return QStringLiteral("not named, taken for millimeter");
    const bool isKnown = unit.millimetres != 1 || unit.name == QStringLiteral("millimeter");
    return NameText(unit.name) + (isKnown ? QStringLiteral(", %1 mm").arg(NumberText(unit.millimetres))
                                          : QStringLiteral(", not known, taken for millimeter"));
}

/// "3: #FF0000 #00FF00 #0000FF"
QString ColoursText(const std::vector<QString>& colours)
{
    constexpr size_t kMostColours = 8;
    QString text = CountText(qint64(colours.size())) + QLatin1Char(':');
    for (size_t i = 0; i < std::min(colours.size(), kMostColours); ++i)
        text += QLatin1Char(' ') + NameText(colours[i]);
    return colours.size() > kMostColours ? text + QStringLiteral(" ...") : text;
}

QString ThumbnailText(const Thumbnail& thumbnail)
{
    const QSize size = PictureSize(thumbnail.bytes);
    const QString pixels = size.isEmpty() ? QStringLiteral("not a picture that can be shown")
                                          : QStringLiteral("%1 x %2").arg(size.width()).arg(size.height());
    return QStringLiteral("%1, %2 bytes, %3")
        .arg(NameText(thumbnail.name), CountText(thumbnail.bytes.size()), pixels);
}

/// What the file says of its objects together. Their places and sizes are told in millimetres below.
void AddPackage(TextTable& table, const Model& model)
{
    table.AddRow({QStringLiteral("unit"), UnitText(model.unit)});
    table.AddRow({QStringLiteral("objects"), CountText(qint64(model.meshes.size()))});
    if (!model.colours.texts.empty())
        table.AddRow({QStringLiteral("colours"), ColoursText(model.colours.texts)});
    if (!model.thumbnail.bytes.isEmpty())
        table.AddRow({QStringLiteral("thumbnail"), ThumbnailText(model.thumbnail)});
}

void AddSurface(TextTable& table, const MeshReport& report, bool isInMillimetres)
{
    const qint64 openEdges = report.topology.openEdges.count;
    table.AddRow({QStringLiteral("facets"), CountText(report.facets)});
    table.AddRow({QStringLiteral("vertices"), CountText(report.vertices)});
    AddTexture(table, report);
    AddBounds(table, report.bounds,
              isInMillimetres ? QStringLiteral("bounds, mm") : QStringLiteral("bounds"));
    table.AddRow({isInMillimetres ? QStringLiteral("volume, mm³") : QStringLiteral("volume"),
                  NumberText(report.volume)});
    table.AddRow(
        {QStringLiteral("open edges"), openEdges == 0 ? QStringLiteral("0, closed") : CountText(openEdges)});
    table.AddRow({QStringLiteral("pieces"), CountText(report.topology.pieces)});
}

/// What the file declares and the model does not hold, a line each.
QString LossTable(const LoadedModel& loaded, const QString& fileName)
{
    const std::vector<Loss> losses = loaded.format->scan(fileName, loaded.model);
    QString lines = losses.empty() ? QString() : QStringLiteral("  not carried\n");
    for (const Loss& loss : losses)
        lines += QStringLiteral("  ") + loss.text + QLatin1Char('\n');
    return lines;
}

/// The lists below the table, a gap before each.
QString ListsText(const LoadedModel& loaded, const QString& fileName)
{
    QString text;
    const bool hasObjects = loaded.format->contents == Contents::Objects;
    for (const QString& list :
         {hasObjects ? ObjectTable(loaded.model) : QString(), MetadataTable(loaded.model),
          MaterialTable(loaded.model, fileName), LossTable(loaded, fileName)})
        text += list.isEmpty() ? QString() : QLatin1Char('\n') + list;
    return text;
}

/// Places the model for measuring it, once its own placements have been told.
QByteArray Text(const QString& fileName, LoadedModel& loaded)
{
    const bool hasObjects = loaded.format->contents == Contents::Objects;
    const QString lists = ListsText(loaded, fileName);
    TextTable table;
    table.AddRow({QStringLiteral("format"), FormatText(*loaded.format, fileName)});
    if (hasObjects)
        AddPackage(table, loaded.model);
    PlaceInMillimetres(loaded.model);
    AddSurface(table, Measure(loaded.model), hasObjects);
    table.AddRow({QStringLiteral("read in"), Seconds(loaded.seconds)});
    table.AddRow({QStringLiteral("peak memory"), PeakMemory()});
    return (fileName + QLatin1Char('\n') + table.ToString() + lists).toUtf8();
}

/// As Text().
QByteArray JsonText(const QString& fileName, LoadedModel& loaded)
{
    const QJsonObject description = DescribeModel(loaded, fileName);
    PlaceInMillimetres(loaded.model);
    return JsonLine(fileName, Merged(description, DescribeSurface(Measure(loaded.model))));
}

QByteArray Inform(const QString& fileName, LoadedModel& loaded, Form form)
{
    return form == Form::Json ? JsonText(fileName, loaded) : Text(fileName, loaded);
}

} // namespace

void AddInfo(CLI::App& app, Command& command)
{
    AddReport(app, "info",
              "Print what model files hold: size, bounds, volume, open edges, objects, materials",
              Form::Tables, Inform, command);
}

} // namespace krmodel
