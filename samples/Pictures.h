#pragma once

class QString;

/// Writes a medal as grey levels, bright where it is high: medal.png.
/// @param directory with its trailing separator
bool WriteMedal(const QString& directory);

/// Writes a woven surface, laid at an angle: weave.texture.
/// @param directory with its trailing separator
bool WriteWeave(const QString& directory);
