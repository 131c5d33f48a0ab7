#include <cstdio>

#include <tbb/global_control.h>

#include "tests/cad/DamagedCad.h"
#include "tests/common/Directory.h"

using namespace test;

namespace {

// What is read in children needs a parent without other threads.
const tbb::global_control kNoWorkers(tbb::global_control::max_allowed_parallelism, 1);

/// Loads the file with each byte in turn set to 0, to 255, raised by 1, and with its highest bit turned.
CadEnds LoadWithEveryByteChanged(QByteArray bytes, const QString& path)
{
    CadEnds ends;
    for (int i = 0; i < bytes.size(); ++i) {
        const char byte = bytes[i];
        for (const char changed : {'\0', '\xff', char(byte + 1), char(byte ^ '\x80')}) {
            bytes[i] = changed;
            LoadInChild(bytes, path, ends);
        }
        bytes[i] = byte;
    }
    return ends;
}

} // namespace

/// Loads a STEP and an IGES file of one face with every byte changed in four ways. 0 when nothing failed but
/// OpenCASCADE.
int main()
{
    const Directory directory;
    const SampleParts parts = MakeSampleParts();
    const QString step = directory.Path(QStringLiteral("face.step")),
                  iges = directory.Path(QStringLiteral("face.iges"));
    if (!WriteSTEP(step, {parts.sheet}) || !WriteIGES(iges, {parts.sheet}))
        return 1;
    int failureCount = 0;
    for (const QString& path : {step, iges}) {
        CadEnds ends = LoadWithEveryByteChanged(Directory::Read(path), path);
        std::printf("%s: %d refused or whole, %d died in OpenCASCADE, %d failed, %d others\n",
                    qPrintable(path.section(QLatin1Char('.'), -1)), ends[ChildEnd::Done],
                    ends[ChildEnd::DiedInOpenCascade], ends[ChildEnd::Failed],
                    ends[ChildEnd::KilledFromOutside]);
        failureCount += ends[ChildEnd::Failed] + ends[ChildEnd::KilledFromOutside];
    }
    return failureCount == 0 ? 0 : 1;
}
