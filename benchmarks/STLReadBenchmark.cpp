#include "benchmarks/STLBenchmarkData.h"

#include "core/common/DecimalText_p.h"
#include "fileformat/common/BlockReader_p.h"
#include "fileformat/stl/STLBinary_p.h"
#include "fileformat/stl/STLText_p.h"

// The steps of a load up to the soup, of a million facets: parsing apart from stitching, and the numbers by
// themselves.

namespace {

using bench::Sample;

void ParseText(benchmark::State& state)
{
    for (auto _ : state) {
        QFile file(Sample::Get().text);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            return state.SkipWithError("cannot read");
        kr::BlockReader source(file, kr::LineEnds::WithoutCarriageReturns);
        const auto soup = kr::stl::ReadText(source, static_cast<std::size_t>(file.size() / 32));
        benchmark::DoNotOptimize(soup->corners.data());
    }
    bench::CountFacets(state, Sample::Get().mesh.GetFaceNum());
}

void ParseBinary(benchmark::State& state)
{
    for (auto _ : state) {
        QFile file(Sample::Get().binary);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            return state.SkipWithError("cannot read");
        const auto soup = kr::stl::ReadBinary(file, 80);
        benchmark::DoNotOptimize(soup->corners.data());
    }
    bench::CountFacets(state, Sample::Get().mesh.GetFaceNum());
}

void ReadBytesOfText(benchmark::State& state)
{
    bench::ReadBytes(state, Sample::Get().text, Sample::Get().mesh.GetFaceNum());
}
void ReadBytesOfBinary(benchmark::State& state)
{
    bench::ReadBytes(state, Sample::Get().binary, Sample::Get().mesh.GetFaceNum());
}

void ParseDecimal(benchmark::State& state)
{
    const std::string text = "-69.998619";
    double value = 0;
    for (auto _ : state) {
        kr::ParseDecimal(text.data(), text.data() + text.size(), value);
        benchmark::DoNotOptimize(value);
    }
}

void FormatFixed6(benchmark::State& state)
{
    char buffer[kr::kFixed6Capacity];
    float value = -69.998619f;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value);
        benchmark::DoNotOptimize(kr::FormatFixed6(buffer, value));
    }
}

} // namespace

BENCHMARK(ReadBytesOfText)->Unit(benchmark::kMillisecond);
BENCHMARK(ParseText)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadBytesOfBinary)->Unit(benchmark::kMillisecond);
BENCHMARK(ParseBinary)->Unit(benchmark::kMillisecond);
BENCHMARK(ParseDecimal);
BENCHMARK(FormatFixed6);

BENCHMARK_MAIN();
