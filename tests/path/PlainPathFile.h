#pragma once

#include <map>
#include <optional>
#include <string>

#include <QByteArray>
#include <QString>

#include "fileformat/path/DXFPathFile.h"

namespace test {

struct PathContent {
    DXFPathFile::Paths paths;
    std::map<int, QString> names;
};

/// A path file put together field by field.
QByteArray WritePathsPlainly(const DXFPathFile::Paths& paths, const std::map<int, std::string>& names);

/// A path file read field by field; nothing when it ends too early.
std::optional<PathContent> ReadPathsPlainly(const QByteArray& bytes);

/// Equal to the last bit of every number, so that no NaN hides a difference.
bool HaveSameBits(const DXFPathFile::Paths& a, const DXFPathFile::Paths& b);

} // namespace test
