#include <QString>

#include "tests/cad/CadFiles.h"

using namespace test;

/// Writes files for CadTurnsProgram into a directory. It does so in a process of its own, so that all that
/// OpenCASCADE does when it is first used is still to be done there.
int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    const SampleParts parts = MakeSampleParts();
    const QString directory = QString::fromLocal8Bit(argv[1]);
    const bool areWritten =
        WriteSTEP(directory + QStringLiteral("/whole.step"), {parts.whole}) &&
        WriteSTEP(directory + QStringLiteral("/parts.step"), {parts.pair, parts.sheet, parts.ball}) &&
        WriteIGES(directory + QStringLiteral("/solids.iges"), {parts.pin, parts.ball, parts.pair}) &&
        WriteIGES(directory + QStringLiteral("/faces.iges"), {parts.sheet, parts.ball}, IGESSolids::AsFaces);
    return areWritten ? 0 : 1;
}
