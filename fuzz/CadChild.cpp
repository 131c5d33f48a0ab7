#include "fuzz/CadChild.h"

#include <cstddef>
#include <cstdint>
#include <new>

#include <sys/mman.h>

#include <QFile>
#include <QTemporaryDir>

#include <Standard_Failure.hxx>

#include <tbb/global_control.h>

#include "fuzz/Require.h"
#include "tests/cad/CadLoadSupport.h"
#include "tests/cad/RunInChild.h"

// OpenCASCADE keeps some memory for good that nothing points to any more.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libTK";
}

namespace fuzz {

namespace {

// OpenCASCADE meshes some damaged surfaces without an end in sight; most loads take some milliseconds.
constexpr unsigned kProcessorSeconds = 2;

// What a child tells its parent about a load.
struct Outcome {
    bool isLoaded = false;
    bool isFailure = false;
    std::size_t meshCount = 0;
    std::size_t faceCount = 0;
    std::size_t nameLength = 0;
};

// The fuzzer does not see what a child runs. It keeps inputs by their outcome instead: each of these is a
// feature.
constexpr std::size_t kFeatureCount = 1024;
__attribute__((section("__libfuzzer_extra_counters"))) std::uint8_t features[kFeatureCount];

void ShowFeature(const Outcome& outcome, test::ChildEnd end)
{
    const std::size_t parts[] = {outcome.isLoaded,  outcome.isFailure,  outcome.meshCount,
                                 outcome.faceCount, outcome.nameLength, static_cast<std::size_t>(end)};
    std::size_t hash = 0;
    for (const std::size_t part : parts)
        hash = hash * 0x01000193 + part;
    features[hash % kFeatureCount] = 1;
}

// In memory that both have.
Outcome& SharedOutcome()
{
    static void* const kMemory =
        mmap(nullptr, sizeof(Outcome), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    Require(kMemory != MAP_FAILED);
    return *static_cast<Outcome*>(kMemory);
}

void Tell(const test::CadMeshes& meshes, Outcome& outcome)
{
    outcome.isLoaded = meshes.IsLoaded();
    outcome.meshCount = meshes.Count();
    for (const Mesh* const mesh : meshes.All()) {
        RequireWhole(*mesh);
        outcome.faceCount += mesh->GetFacesVecPtr()->size();
        outcome.nameLength += static_cast<std::size_t>(mesh->GetObjectName().size());
    }
}

bool LoadsWholeMeshesOrNothing(const QString& fileName, Outcome& outcome)
{
    try {
        const test::CadMeshes meshes(fileName);
        Tell(meshes, outcome);
        return meshes.IsLoaded() || meshes.Count() == 0;
    } catch (const Standard_Failure&) {
        // Promised to pass, as is the next.
    } catch (const std::bad_alloc&) {
    }
    outcome.isFailure = true;
    return true;
}

} // namespace

void PrepareForCadChildren()
{
    // A child has none of its parent's threads.
    static const tbb::global_control kNoWorkers(tbb::global_control::max_allowed_parallelism, 1);
    // What an IGES file gives is asked for only if its sections are whole; of an empty STEP file all is
    // asked.
    const QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("nothing.step")));
    Require(file.open(QIODevice::WriteOnly));
    file.close();
    Require(LoadsWholeMeshesOrNothing(file.fileName(), SharedOutcome()));
}

void RequireCadLoad(const QString& fileName)
{
    Outcome& outcome = SharedOutcome();
    outcome = {};
    const auto load = [&] { return LoadsWholeMeshesOrNothing(fileName, outcome); };
    const test::ChildEnd end = test::RunInChild(load, kProcessorSeconds);
    Require(end != test::ChildEnd::Failed);
    ShowFeature(outcome, end);
}

} // namespace fuzz
