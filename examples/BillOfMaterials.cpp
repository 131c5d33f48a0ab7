// Counts the parts of STEP and IGES files and sums up their volumes: BillOfMaterials ASSEMBLY.step...
#include <cstdio>
#include <future>
#include <map>
#include <memory>
#include <stdexcept>

#include <QString>

#include "core/mesh/Mesh.h"
#include "fileformat/cad/STEPAndIGESFile.h"

namespace {

struct Item {
    int count = 0;
    double volume = 0;
};
using Bill = std::map<QString, Item>;

Bill BillOf(const QString& fileName)
{
    std::vector<Mesh*> meshes;
    if (!STEPAndIGESFile::LoadFile(fileName, meshes, 1, 20, false))
        throw std::runtime_error("cannot be read");
    Bill bill;
    for (const Mesh* const mesh : meshes) {
        const std::unique_ptr<const Mesh> part(mesh); // ours to delete
        Item& item = bill[part->GetObjectName()];
        ++item.count;
        item.volume += part->GetVolume();
    }
    return bill;
}

} // namespace

int main(int argc, char** argv)
{
    // Files may be read at once. OpenCASCADE reads one after the other, and tessellates them all together.
    std::vector<std::future<Bill>> bills;
    for (int i = 1; i < argc; ++i)
        bills.push_back(std::async(std::launch::async, BillOf, QString::fromUtf8(argv[i])));
    int failures = argc < 2;
    for (std::size_t i = 0; i < bills.size(); ++i) {
        try {
            for (const auto& [name, item] : bills[i].get())
                std::printf("%s: %d x %s, %.2f cm3 in all\n", argv[i + 1], item.count, qUtf8Printable(name),
                            item.volume / 1000);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s: %s\n", argv[i + 1], error.what());
            ++failures;
        } catch (...) { // OpenCASCADE's failures are no std::exception
            std::fprintf(stderr, "%s: OpenCASCADE gave up\n", argv[i + 1]);
            ++failures;
        }
    }
    return failures > 0 ? 1 : 0;
}
