#pragma once

#include <vector>

#include <QStringList>

namespace krmodel {

/// Rows of text in columns as wide as their widest cell: the first column to the left, the others to the
/// right. A row's last cell, when it stands alone beside the first column, does not widen any column.
class TextTable {
public:
    void AddRow(const QStringList& cells) { m_rows.push_back(cells); }

    /// Each line indented by two blanks and ended by a line feed.
    QString ToString() const;

private:
    int WidthOf(int column) const;
    QString LineOf(const QStringList& cells, const std::vector<int>& widths) const;

    std::vector<QStringList> m_rows;
};

} // namespace krmodel
