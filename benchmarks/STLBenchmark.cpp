#include "benchmarks/STLBenchmarkData.h"

// Whole loads and saves of a million facets, each beside its baseline: reading or writing the same bytes.
// Saves go to /dev/shm where there is one, so that no disk is measured.

namespace {

using bench::Sample;

void Load(benchmark::State& state, const QString& path)
{
    for (auto _ : state) {
        Mesh mesh(0.03f);
        if (!STLFile::LoadFile(path, mesh, false, 80, false))
            return state.SkipWithError("cannot load");
        benchmark::DoNotOptimize(mesh.GetVolume());
    }
    bench::CountFacets(state, Sample::Get().mesh.GetFaceNum());
}

void Save(benchmark::State& state, bool ascii)
{
    const bench::OutputDirectory directory;
    for (auto _ : state) {
        if (!STLFile::SaveFile(directory.File(), Sample::Get().mesh, ascii, 80))
            return state.SkipWithError("cannot save");
    }
    bench::CountFacets(state, Sample::Get().mesh.GetFaceNum());
}

void ReadBytesOfBinary(benchmark::State& state)
{
    bench::ReadBytes(state, Sample::Get().binary, Sample::Get().mesh.GetFaceNum());
}
void LoadBinary(benchmark::State& state)
{
    Load(state, Sample::Get().binary);
}
void ReadBytesOfText(benchmark::State& state)
{
    bench::ReadBytes(state, Sample::Get().text, Sample::Get().mesh.GetFaceNum());
}
void LoadText(benchmark::State& state)
{
    Load(state, Sample::Get().text);
}
void WriteBytesOfBinary(benchmark::State& state)
{
    bench::WriteBytes(state, Sample::Get().binary, Sample::Get().mesh.GetFaceNum());
}
void SaveBinary(benchmark::State& state)
{
    Save(state, false);
}
void WriteBytesOfText(benchmark::State& state)
{
    bench::WriteBytes(state, Sample::Get().text, Sample::Get().mesh.GetFaceNum());
}
void SaveText(benchmark::State& state)
{
    Save(state, true);
}

} // namespace

BENCHMARK(ReadBytesOfBinary)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadBinary)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadBytesOfText)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadText)->Unit(benchmark::kMillisecond);
BENCHMARK(WriteBytesOfBinary)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveBinary)->Unit(benchmark::kMillisecond);
BENCHMARK(WriteBytesOfText)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveText)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
