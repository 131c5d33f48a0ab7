#include "apps/krmodel/TextTable.h"

#include <algorithm>

namespace krmodel {

namespace {

constexpr int kGap = 2;

bool IsRemark(const QStringList& cells)
{
    return cells.size() == 2;
}

} // namespace

int TextTable::WidthOf(int column) const
{
    int width = 0;
    for (const QStringList& cells : m_rows)
        if (column == 0 || (column < cells.size() && !IsRemark(cells)))
            width = std::max(width, cells.value(column).size());
    return width;
}

QString TextTable::Justified(const QString& cell, int column, int width) const
{
    const bool isLeft = column < m_sides.size() && m_sides[column] == 'l';
    return isLeft ? cell.leftJustified(width) : cell.rightJustified(width);
}

QString TextTable::LineOf(const QStringList& cells, const std::vector<int>& widths) const
{
    const QString gap(kGap, QLatin1Char(' '));
    QString line = gap + Justified(cells.value(0), 0, widths[0]);
    if (IsRemark(cells))
        return line + gap + cells[1] + QLatin1Char('\n');
    for (int column = 1; column < cells.size(); ++column)
        line += gap + Justified(cells[column], column, widths[size_t(column)]);
    while (line.endsWith(QLatin1Char(' ')))
        line.chop(1);
    return line + QLatin1Char('\n');
}

QString TextTable::ToString() const
{
    int columns = 1;
    for (const QStringList& cells : m_rows)
        columns = std::max(columns, cells.size());
    std::vector<int> widths;
    for (int column = 0; column < columns; ++column)
        widths.push_back(WidthOf(column));
    QString text;
    for (const QStringList& cells : m_rows)
        text += LineOf(cells, widths);
    return text;
}

} // namespace krmodel
