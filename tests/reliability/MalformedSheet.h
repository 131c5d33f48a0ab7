#pragma once

#include <string>

#include <QByteArray>
#include <QString>

// A sheet, one rectangle, as STEP and IGES files, and what is read of it. OpenCASCADE crashes on some files
// whose entities name others that are not there; none of the malformed ones does so.

namespace test {

/// What a file of the sheet gives: two triangles.
constexpr char kSheet[] = "2 faces of 4 vertices from 0 0 0 to 0 20 30 Sheet";

QByteArray SheetAsSTEP();
QByteArray SheetAsIGES();

/// Each mesh of the file with its extents and its name, or that it is refused.
std::string ReadSheet(const QString& path);

} // namespace test
