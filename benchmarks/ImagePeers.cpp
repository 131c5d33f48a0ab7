#ifdef HAVE_VTK

#include <benchmark/benchmark.h>

#include <vtkImageDataGeometryFilter.h>
#include <vtkImageLuminance.h>
#include <vtkNew.h>
#include <vtkPNGReader.h>
#include <vtkPolyData.h>
#include <vtkTriangleFilter.h>
#include <vtkWarpScalar.h>

#include "benchmarks/ImageBenchmarkData.h"

// The top of the same relief, half of its surface, as VTK makes it.

namespace {

void MakeTopByVTK(benchmark::State& state)
{
    for (auto _ : state) {
        vtkNew<vtkPNGReader> reader;
        reader->SetFileName(bench::PictureOfHills().toLocal8Bit().constData());
        vtkNew<vtkImageLuminance> grey;
        grey->SetInputConnection(reader->GetOutputPort());
        vtkNew<vtkImageDataGeometryFilter> cells;
        cells->SetInputConnection(grey->GetOutputPort());
        vtkNew<vtkTriangleFilter> triangles;
        triangles->SetInputConnection(cells->GetOutputPort());
        vtkNew<vtkWarpScalar> heights;
        heights->SetInputConnection(triangles->GetOutputPort());
        heights->Update();
        benchmark::DoNotOptimize(heights->GetOutput()->GetNumberOfPoints());
    }
}

} // namespace

BENCHMARK(MakeTopByVTK)->Unit(benchmark::kMillisecond);

#endif
