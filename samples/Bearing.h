#pragma once

class QString;

/// Writes a bearing block with its four screws, an assembly: bearing.step.
/// @param directory with its trailing separator
bool WriteBearing(const QString& directory);
