#pragma once

class QString;

/// Writes a bolt and a nut, in inches, each an object at its own place, with a picture of them: bolt.3mf.
/// @param directory with its trailing separator
bool WriteBolt(const QString& directory);
