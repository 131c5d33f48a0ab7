#pragma once

class QString;

/// Writes the outlines of a gasket, holes, and lines for marking it: gasket.path.
/// @param directory with its trailing separator
bool WriteGasket(const QString& directory);
