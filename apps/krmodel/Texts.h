#pragma once

#include <QString>

namespace krmodel {

/// Digits as everywhere in the program's output: a point for decimals, thousands apart.
QString CountText(qint64 count);
QString NumberText(double value);

/// A name out of a file, fit to be shown: characters that would steer a terminal are replaced, and of one
/// too long the middle is left out.
QString NameText(const QString& name);

} // namespace krmodel
