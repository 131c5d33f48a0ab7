#pragma once

class QString;

/// Writes a hot-air balloon, its materials and the picture on its envelope: balloon.obj, balloon.mtl,
/// balloon.png.
/// @param directory with its trailing separator
bool WriteBalloon(const QString& directory);
