#include "fileformat/cad/ImportFile_p.h"

// Looked up by its name, kr::cad::kModuleEntry, when the first CAD file is read.
extern "C" __attribute__((visibility("default"))) kr::cad::ImportFunction KRCoreCadImportFunction()
{
    return kr::cad::ImportFile;
}
