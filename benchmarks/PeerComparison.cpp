// Compares loading and saving of files with the peers that Debian packages, in one interleaved run:
//
//   PeerComparison [--rounds N] [--only WORDS] [DIRECTORY]
//
// Each run is a process of its own, pinned to one core; every round runs every engine on every file once, so
// that a busy machine slows all of them alike. A process does its job twice: the first time the system has to
// find memory for it, the second time memory is at hand and the work itself shows. The inputs are made in
// DIRECTORY, best a file system in memory, and removed again. Reported are medians over the rounds, in
// processor time, and how many times longer the others take, each time.
// Peers that are not installed are left out. STL: ADMesh (libadmesh-dev) does the whole job, OpenCASCADE
// (libocct-data-exchange-dev) joins exactly equal corners; "copy" is the baseline, the file's bytes read and
// its corners copied into one array. OBJ: tinyobjloader (libtinyobjloader-dev), OpenCASCADE and VTK
// (libvtk9-dev); "read bytes" and "text stream" are the baselines, blocks that nothing is done with and a
// save without a number formatter of its own. 3MF: lib3mf (lib3mf-dev).

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <sched.h>

#include "benchmarks/BenchmarkData.h"
#include "benchmarks/Peers.h"
#include "fileformat/3mf/Model3MF.h"
#include "fileformat/obj/OBJFile.h"
#include "fileformat/stl/STLFile.h"

namespace {

using peers::Entry;
using peers::Job;
using peers::Outcome;
using Point = Vector3D<float>;

// ---- inputs

std::vector<Point> TorusCorners(int rings, int sides)
{
    const auto at = [&](int i, int j) {
        const double u = 6.283185307179586 * (i % rings) / rings, v = 6.283185307179586 * (j % sides) / sides;
        const double radius = 50 + 20 * std::cos(v);
        return Point(float(radius * std::cos(u)), float(radius * std::sin(u)), float(20 * std::sin(v)));
    };
    std::vector<Point> corners;
    corners.reserve(std::size_t(rings) * std::size_t(sides) * 6);
    for (int i = 0; i < rings; ++i)
        for (int j = 0; j < sides; ++j)
            corners.insert(corners.end(), {at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j),
                                           at(i + 1, j + 1), at(i, j + 1)});
    return corners;
}

void ShuffleFacets(std::vector<Point>& corners)
{
    std::mt19937 random(1);
    for (std::size_t i = corners.size() / 3; i-- > 1;)
        std::swap_ranges(&corners[3 * i], &corners[3 * i] + 3, &corners[3 * (random() % (i + 1))]);
}

// Two of a hundred corners are off in the sixth digit, as after a conversion through text.
void JitterCorners(std::vector<Point>& corners)
{
    std::mt19937 random(2);
    std::uniform_real_distribution<float> offset(-1e-6f, 1e-6f);
    for (Point& p : corners)
        if (random() % 50 == 0)
            p = Point(p.x * (1 + offset(random)), p.y * (1 + offset(random)), p.z * (1 + offset(random)));
}

struct Input {
    const char* name;
    int rings;
    int sides;
    void (*change)(std::vector<Point>&);
    Job load;
    int objects = 1;
};

constexpr Input kInputs[] = {
    {"in order 1M", 1000, 500, nullptr, Job::LoadBinarySTL},
    {"in order 4M", 2000, 1000, nullptr, Job::LoadBinarySTL},
    {"shuffled 1M", 1000, 500, ShuffleFacets, Job::LoadBinarySTL},
    {"shuffled 4M", 2000, 1000, ShuffleFacets, Job::LoadBinarySTL},
    {"jittered 1M", 1000, 500, JitterCorners, Job::LoadBinarySTL},
    {"jittered 4M", 2000, 1000, JitterCorners, Job::LoadBinarySTL},
    {"text 1M", 1000, 500, nullptr, Job::LoadTextSTL},
    {"OBJ 1M", 1000, 500, nullptr, Job::LoadOBJ},
    {"3MF 1M", 1000, 500, nullptr, Job::Load3MF},
    {"3MF 200 x 5,000", 50, 50, nullptr, Job::Load3MF, 200},
};

int FacetCount(const Input& input)
{
    return 2 * input.rings * input.sides * input.objects;
}

bool MakePackage(const Input& input, const QString& path)
{
    Mesh mesh = bench::Torus(input.rings, input.sides);
    Model3MF::ModelObjectInfo object;
    object.mesh = &mesh;
    return Model3MF().SaveFile(path, std::vector(std::size_t(input.objects), object), {0, 0, 0});
}

bool MakeInput(const Input& input, const QString& path)
{
    if (input.load == Job::LoadOBJ)
        return OBJFile::SaveFile(path, bench::TexturedTorus(input.rings, input.sides), true, false);
    if (input.load == Job::Load3MF)
        return MakePackage(input, path);
    std::vector<Point> corners = TorusCorners(input.rings, input.sides);
    if (input.change)
        input.change(corners);
    return STLFile::SaveFile(path, corners, input.load == Job::LoadTextSTL, 80);
}

// ---- jobs

/// The two runs of one process.
struct Result {
    double firstSeconds = 0;
    double againSeconds = 0;
    double peakBytes = 0;
    long vertices = 0;
};

std::vector<Entry> AllEntries()
{
    std::vector<Entry> entries = peers::STLEntries();
    for (const std::vector<Entry>& more : {peers::OBJEntries(), peers::ThreeMFEntries()})
        entries.insert(entries.end(), more.begin(), more.end());
    return entries;
}

struct Task {
    std::size_t input;
    std::size_t entry; // of AllEntries()
};

std::string TitleOf(const Task& task)
{
    static const std::map<Job, std::string> kNames = {{Job::SaveBinarySTL, "save binary"},
                                                      {Job::SaveTextSTL, "save text"},
                                                      {Job::SaveOBJ, "save OBJ"},
                                                      {Job::Save3MF, "save"}};
    const auto found = kNames.find(AllEntries()[task.entry].job);
    return (found == kNames.end() ? "load" : found->second) + ", " + kInputs[task.input].name;
}

void AddTasks(std::vector<Task>& tasks, Job job, std::size_t input)
{
    const std::vector<Entry> entries = AllEntries();
    for (std::size_t entry = 0; entry < entries.size(); ++entry)
        if (entries[entry].job == job)
            tasks.push_back({input, entry});
}

std::vector<Task> AllTasks()
{
    std::vector<Task> tasks;
    for (std::size_t input = 0; input < std::size(kInputs); ++input)
        AddTasks(tasks, kInputs[input].load, input);
    for (const Job job : {Job::SaveBinarySTL, Job::SaveTextSTL, Job::SaveOBJ})
        AddTasks(tasks, job, 0);
    for (std::size_t input = 0; input < std::size(kInputs); ++input)
        if (kInputs[input].load == Job::Load3MF)
            AddTasks(tasks, Job::Save3MF, input);
    return tasks;
}

// The child's part: one task, twice, and one line of numbers.
int RunTask(const QString& entryNumber, const QString& path)
{
    const Entry entry = AllEntries().at(entryNumber.toUInt());
    const Outcome first = entry.run(path);
    const Outcome again = entry.run(path);
    std::printf("%.9f %.9f %.0f %ld\n", first.seconds, again.seconds, first.peakBytes, again.vertices);
    return again.vertices > 0 ? 0 : 1;
}

bool StartTask(const Task& task, const QString& path, Result& result)
{
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("--task"), QString::number(task.entry), path});
    if (!child.waitForFinished(-1) || child.exitCode() != 0)
        return false;
    // Peers chat on standard output; the numbers are the last line.
    const QByteArray line = child.readAllStandardOutput().trimmed().split('\n').last();
    std::istringstream numbers(line.toStdString());
    return bool(numbers >> result.firstSeconds >> result.againSeconds >> result.peakBytes >> result.vertices);
}

template<class Field>
double Median(const std::vector<Result>& results, Field field)
{
    std::vector<double> values;
    for (const Result& result : results)
        values.push_back(double(result.*field));
    std::sort(values.begin(), values.end());
    return values.empty() ? NAN : values[values.size() / 2];
}

void Report(const std::vector<Task>& tasks, const std::vector<std::vector<Result>>& results)
{
    std::printf("%-24s %-13s %9s %9s %9s %9s %13s %9s\n", "nanoseconds a facet", "engine", "first", "x ours",
                "again", "x ours", "peak B/facet", "vertices");
    const std::vector<Entry> entries = AllEntries();
    double oursFirst = NAN, oursAgain = NAN;
    for (std::size_t i = 0; i < tasks.size(); ++i) {
        const Input& input = kInputs[tasks[i].input];
        const double facets = FacetCount(input);
        const double first = 1e9 * Median(results[i], &Result::firstSeconds) / facets;
        const double again = 1e9 * Median(results[i], &Result::againSeconds) / facets;
        if (i == 0 || TitleOf(tasks[i]) != TitleOf(tasks[i - 1])) {
            oursFirst = first;
            oursAgain = again;
        }
        std::printf("%-24s %-13s %9.1f %9.2f %9.1f %9.2f %13.1f %9.0f\n", TitleOf(tasks[i]).c_str(),
                    entries[tasks[i].entry].engine, first, first / oursFirst, again, again / oursAgain,
                    Median(results[i], &Result::peakBytes) / facets, Median(results[i], &Result::vertices));
    }
}

void PinToLastCore()
{
    cpu_set_t cores;
    if (sched_getaffinity(0, sizeof cores, &cores) != 0)
        return;
    std::size_t last = CPU_SETSIZE - 1;
    while (last > 0 && !CPU_ISSET(last, &cores))
        --last;
    CPU_ZERO(&cores);
    CPU_SET(last, &cores);
    sched_setaffinity(0, sizeof cores, &cores);
}

struct Options {
    int rounds = 5;
    QStringList only;
    QString directory;
};

Options ReadOptions(const QStringList& arguments)
{
    Options options;
    for (int i = 1; i < arguments.size(); ++i) {
        if (arguments[i] == QLatin1String("--rounds") && i + 1 < arguments.size())
            options.rounds = std::max(1, arguments[++i].toInt());
        else if (arguments[i] == QLatin1String("--only") && i + 1 < arguments.size())
            options.only = arguments[++i].split(QLatin1Char(','));
        else
            options.directory = arguments[i] + QLatin1Char('/');
    }
    return options;
}

bool IsWanted(const Task& task, const QStringList& only)
{
    const QString title = QString::fromStdString(TitleOf(task));
    return only.isEmpty() ||
           std::any_of(only.begin(), only.end(), [&](const QString& word) { return title.contains(word); });
}

int Compare(const Options& options)
{
    QTemporaryDir directory(options.directory + QStringLiteral("peers-XXXXXX"));
    std::vector<Task> tasks = AllTasks();
    tasks.erase(
        std::remove_if(tasks.begin(), tasks.end(), [&](const Task& t) { return !IsWanted(t, options.only); }),
        tasks.end());
    std::map<std::size_t, QString> paths;
    for (const Task& task : tasks)
        if (paths.emplace(task.input, directory.filePath(QStringLiteral("%1.model").arg(task.input)))
                .second &&
            !MakeInput(kInputs[task.input], paths[task.input]))
            return 1;
    PinToLastCore();
    std::vector<std::vector<Result>> results(tasks.size());
    for (int round = 0; round < options.rounds; ++round)
        for (std::size_t i = 0; i < tasks.size(); ++i) {
            Result result;
            if (StartTask(tasks[i], paths[tasks[i].input], result))
                results[i].push_back(result);
            QFile::remove(peers::OutputOf(paths[tasks[i].input]));
        }
    Report(tasks, results);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 4 && arguments[1] == QLatin1String("--task"))
        return RunTask(arguments[2], arguments[3]);
    return Compare(ReadOptions(arguments));
}
