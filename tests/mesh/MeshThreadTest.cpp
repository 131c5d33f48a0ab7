#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "tests/mesh/MeshBuilders.h"

namespace {

// Runs `work(number)` in threads that start together.
template<class Work>
void RunTogether(int threadCount, Work work)
{
    std::atomic<bool> mayStart{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i)
        threads.emplace_back([&, i] {
            while (!mayStart.load())
                std::this_thread::yield();
            work(i);
        });
    mayStart = true;
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace

TEST(MeshThreads, ReadersOfOneMeshSeeTheSameBuiltLists)
{
    for (int round = 0; round < 100; ++round) {
        Mesh filled = Cube();
        filled.PostProcess(false, true, true, true, nullptr, nullptr);
        const Mesh& mesh = filled;
        const void* seen[4][3] = {};
        RunTogether(4, [&](int i) {
            // Each begins with another list.
            for (int step = 0; step < 3; ++step) {
                const int list = (i + step) % 3;
                seen[i][list] = list == 0   ? static_cast<const void*>(&mesh.GetFaceNormals())
                                : list == 1 ? static_cast<const void*>(&mesh.GetVertexNormals())
                                            : static_cast<const void*>(&mesh.GetFaceNeighbours());
            }
            EXPECT_EQ(mesh.GetFaceNormals().size(), 12u);
            EXPECT_EQ(mesh.GetVertexNormals().size(), 8u);
            EXPECT_EQ(mesh.GetFaceNeighbours().size(), 12u);
            EXPECT_EQ(mesh.CalcuateVolume(), 1);
            EXPECT_EQ(mesh.GetBoundingBox().maximum, Point(1, 1, 1));
        });
        for (int i = 1; i < 4; ++i)
            for (int list = 0; list < 3; ++list)
                EXPECT_EQ(seen[i][list], seen[0][list]);
    }
}

TEST(MeshThreads, MeshCanBeCopiedWhileOthersRead)
{
    for (int round = 0; round < 100; ++round) {
        Mesh filled = Cube();
        filled.PostProcess(false, true, true, true, nullptr, nullptr);
        const Mesh& mesh = filled;
        RunTogether(4, [&](int i) {
            if (i % 2 == 0) {
                EXPECT_EQ(mesh.GetFaceNeighbours().size(), 12u);
                return;
            }
            const Mesh copy = mesh;
            EXPECT_EQ(copy.GetFaceNeighbours(), mesh.GetFaceNeighbours());
            EXPECT_EQ(copy.GetVertexNormals(), mesh.GetVertexNormals());
        });
    }
}

TEST(MeshThreads, DifferentMeshesAreMadeAtTheSameTime)
{
    for (int round = 0; round < 50; ++round)
        RunTogether(4, [](int i) {
            Mesh mesh(0.03f);
            for (int copy = 0; copy <= i; ++copy)
                mesh.AddVertexAndFaces(CubeCorners(), CubeFaces());
            mesh.PostProcessMergeRawVertexBuffer();
            ExpectCountsMatchLists(mesh, 8, std::size_t(12 * (i + 1)));
            std::map<long long, int> edgeCounts;
            mesh.PostProcessFromVertexBuffer(nullptr, true, true, true, true, nullptr, &edgeCounts);
            EXPECT_EQ(edgeCounts.size(), 18u);
            EXPECT_EQ(mesh.GetFaceNeighbours().size(), std::size_t(12 * (i + 1)));
            mesh.SetVolume(mesh.CalcuateVolume());
            EXPECT_EQ(mesh.GetVolume(), i + 1);
        });
}
