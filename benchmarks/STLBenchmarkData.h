#pragma once

#include <QTemporaryDir>

#include "benchmarks/BenchmarkData.h"
#include "fileformat/stl/STLFile.h"

namespace bench {

/// A million facets in memory and in two files.
struct Sample {
    Mesh mesh = Torus(1000, 500);
    QTemporaryDir directory;
    QString binary = directory.filePath(QStringLiteral("binary.stl"));
    QString text = directory.filePath(QStringLiteral("text.stl"));

    Sample() : isSaved(STLFile::SaveFile(binary, mesh, false, 80) && STLFile::SaveFile(text, mesh, true, 80))
    {}
    bool isSaved;

    static const Sample& Get()
    {
        static const Sample kSample;
        return kSample;
    }
};

} // namespace bench
