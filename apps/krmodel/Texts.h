#pragma once

#include <QString>

namespace krmodel {

/// What stands in a table for a text that is not there is "-".
QString TextOrDash(const QString& text);

/// Digits as everywhere in the program's output: a point for decimals, thousands apart.
QString CountText(qint64 count);
QString NumberText(double value);

/// How many lines of a list are shown.
constexpr size_t kMostLines = 30;
/// The line below a list of @p count lines of which kMostLines are shown; empty when all are.
QString MoreText(size_t count);

/// A name out of a file, fit to be shown: characters that would steer a terminal are replaced, and of one
/// too long the middle is left out.
QString NameText(const QString& name);

} // namespace krmodel
