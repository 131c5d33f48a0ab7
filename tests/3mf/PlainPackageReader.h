#pragma once

#include <string>

#include "fileformat/3mf/Model3MF.h"
#include "tests/3mf/PlainModelReader.h"

namespace test {

/// Packages read plainly: every entry is opened by its name in an archive opened for it, and read whole,
/// whether somebody needs it or not; model parts go to the plain reader of these.
struct PlainPackage {
    bool LoadFile(const QString& fileName);

    /// False for an archive that is too much for plain reading: it does not get past an entry without a name,
    /// and hangs in one that is compressed by bzip2 and cut short.
    static bool CanLoad(const QString& fileName);

    PlainModel model;
    Model3MF contentTypes;
    QString imageName = QStringLiteral("Metadata/thumbnail.png");
    QByteArray image;
};

/// The first thing in which the two differ; empty if there is none.
std::string Difference(const PlainPackage& plain, const Model3MF& package);

} // namespace test
