#pragma once

#include <algorithm>
#include <map>

#include <QFile>

#include <gtest/gtest.h>

#include "tests/cad/CadFiles.h"
#include "tests/cad/CadLoadSupport.h"
#include "tests/cad/RunInChild.h"

namespace test {

/// The IGES file of a face whose loop has an entry in the directory that ends among lines of no section.
inline QByteArray WithAnUnfinishedLoop(QByteArray iges)
{
    // The second line of the entry; column 73 has the letter of the section.
    const int letter = iges.lastIndexOf("\n     508 ") + 73;
    EXPECT_EQ(iges[letter], 'D');
    iges[letter] = 'E';
    return iges;
}

/// Whatever a load of a damaged file gives is whole: refused, or meshes whose faces name vertices that are
/// there, or an exception of OpenCASCADE's and no meshes.
inline bool GivesWholeMeshesOrNothing(const QString& path)
{
    CadMeshes meshes;
    bool isLoaded = false;
    const bool throws = EndsInStandardFailure(
        [&] { isLoaded = STEPAndIGESFile::LoadFile(path, meshes.All(), kDeflection, kAngle, true); });
    if ((throws || !isLoaded) && meshes.Count() > 0)
        return false;
    return OpenDocumentCount() == 0 && std::all_of(meshes.All().begin(), meshes.All().end(),
                                                   [](const Mesh* mesh) { return IsWhole(*mesh); });
}

/// How many loads ended in each way.
using CadEnds = std::map<ChildEnd, int>;

/// Writes the file, loads it in a process of its own, and counts how that ended.
inline void LoadInChild(const QByteArray& bytes, const QString& path, CadEnds& ends)
{
    QFile file(path);
    const bool isWritten = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    file.close();
    ++ends[isWritten ? RunInChild([&] { return GivesWholeMeshesOrNothing(path); }, 30)
                     : ChildEnd::KilledFromOutside];
}

} // namespace test
