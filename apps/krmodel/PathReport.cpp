#include "apps/krmodel/PathReport.h"

#include <algorithm>
#include <cmath>

#include "apps/krmodel/TextTable.h"
#include "apps/krmodel/Texts.h"

namespace krmodel {

namespace {

void AddAxis(TextTable& table, const char* name, double minimum, double maximum)
{
    table.AddRow(
        {QLatin1String(name), NumberText(minimum), NumberText(maximum), NumberText(maximum - minimum)});
}

void AddBounds(TextTable& table, const PathBounds& bounds)
{
    if (bounds.isEmpty) {
        table.AddRow({QStringLiteral("bounds"), QStringLiteral("none, no point is finite")});
        return;
    }
    table.AddRow({QStringLiteral("bounds"), QStringLiteral("minimum"), QStringLiteral("maximum"),
                  QStringLiteral("size")});
    AddAxis(table, "x", bounds.minimum.x, bounds.maximum.x);
    AddAxis(table, "y", bounds.minimum.y, bounds.maximum.y);
}

QString SizeText(const PathBounds& bounds)
{
    if (bounds.isEmpty)
        return QStringLiteral("-");
    return NumberText(bounds.maximum.x - bounds.minimum.x) + QStringLiteral(" x ") +
           NumberText(bounds.maximum.y - bounds.minimum.y);
}

PathMeasures Measure(const std::vector<DXFPathFile::Contour>& contours)
{
    PathMeasures measures;
    for (const DXFPathFile::Contour& contour : contours)
        measures.Add(contour);
    return measures;
}

QStringList Cells(int id, const QString& name, const PathMeasures& measures)
{
    return {QString::number(id),
            TextOrDash(NameText(name)),
            CountText(measures.contours),
            CountText(measures.closed),
            CountText(measures.contours - measures.closed),
            CountText(measures.points),
            SizeText(measures.bounds)};
}

QString SetTable(const PathFile& file)
{
    TextTable table("rlrrrrl");
    table.AddRow({QStringLiteral("set"), QStringLiteral("name"), QStringLiteral("contours"),
                  QStringLiteral("closed"), QStringLiteral("open"), QStringLiteral("points"),
                  QStringLiteral("size")});
    size_t shown = 0;
    for (auto set = file.paths.begin(); set != file.paths.end() && shown < kMostLines; ++set, ++shown)
        table.AddRow(Cells(set->first, file.names.at(set->first), Measure(set->second)));
    return table.ToString() + MoreText(file.paths.size());
}

} // namespace

void PathBounds::Include(const Vector2D<double>& point)
{
    minimum = isEmpty ? point : Vector2D<double>(std::min(minimum.x, point.x), std::min(minimum.y, point.y));
    maximum = isEmpty ? point : Vector2D<double>(std::max(maximum.x, point.x), std::max(maximum.y, point.y));
    isEmpty = false;
}

void PathMeasures::Add(const DXFPathFile::Contour& contour)
{
    ++contours;
    closed += IsClosed(contour) ? 1 : 0;
    points += qint64(contour.size());
    for (const Vector2D<double>& point : contour)
        if (IsFinite(point))
            bounds.Include(point);
}

PathMeasures Measure(const DXFPathFile::Paths& paths)
{
    PathMeasures measures;
    for (const auto& [id, contours] : paths)
        for (const DXFPathFile::Contour& contour : contours)
            measures.Add(contour);
    return measures;
}

bool IsClosed(const DXFPathFile::Contour& contour)
{
    return contour.size() > 2 && contour.front() == contour.back();
}

bool IsFinite(const Vector2D<double>& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y);
}

QString PathTables(const PathFile& file)
{
    const PathMeasures all = Measure(file.paths);
    TextTable table;
    table.AddRow({QStringLiteral("path sets"), CountText(qint64(file.paths.size()))});
    table.AddRow({QStringLiteral("contours"), QStringLiteral("%1, %2 closed, %3 open")
                                                  .arg(CountText(all.contours), CountText(all.closed),
                                                       CountText(all.contours - all.closed))});
    table.AddRow({QStringLiteral("points"), CountText(all.points)});
    table.AddRow({QStringLiteral("unit"), QStringLiteral("none, the format names none")});
    AddBounds(table, all.bounds);
    return table.ToString() + QLatin1Char('\n') + SetTable(file);
}

} // namespace krmodel
