#pragma once

#include <vector>

#include <QByteArray>
#include <QStringList>

namespace krmodel {

/// Rows of text in columns as wide as their widest cell. A row's last cell, when it stands alone beside the
/// first column, is put to the left and does not widen any column.
class TextTable {
public:
    /// @param sides  a letter a column, 'l' to put its cells to the left; further columns to the right
    explicit TextTable(const char* sides = "l") : m_sides(sides) {}

    void AddRow(const QStringList& cells) { m_rows.push_back(cells); }

    /// Each line indented by two blanks, ended by a line feed, without blanks in front of that.
    QString ToString() const;

private:
    int WidthOf(int column) const;
    QString LineOf(const QStringList& cells, const std::vector<int>& widths) const;

    QString Justified(const QString& cell, int column, int width) const;

    QByteArray m_sides;
    std::vector<QStringList> m_rows;
};

} // namespace krmodel
