#include <cstdio>
#include <stdexcept>
#include <vector>

#include <QString>

#include "core/mesh/Mesh.h"
#include "fileformat/cad/STEPAndIGESFile.h"

/// Loads a file into a list that is not empty, and tells what became of it.
int main(int argc, char** argv)
{
    if (argc != 2)
        return 1;
    Mesh earlier(0.03f);
    std::vector<Mesh*> meshes = {&earlier};
    try {
        const bool isRead = STEPAndIGESFile::LoadFile(QString::fromUtf8(argv[1]), meshes, 1, 20);
        std::printf("%s, %zu mesh as before\n", isRead ? "read" : "not read", meshes.size());
    } catch (const std::runtime_error& error) {
        std::printf("%s: %s\n", meshes.empty() ? "no mesh" : "meshes", error.what());
    }
    return 0;
}
