// Compares loading and saving of STL files with the peers that Debian packages, in one interleaved run:
//
//   PeerComparison [--rounds N] [--only WORDS] [DIRECTORY]
//
// Each run is a process of its own, pinned to one core; every round runs every engine on every file once, so
// that a busy machine slows all of them alike. A process does its job twice: the first time the system has to
// find memory for it, the second time memory is at hand and the work itself shows. The inputs are made in
// DIRECTORY, best a file system in memory, and removed again. Reported are medians over the rounds, in
// processor time, and how many times longer the others take, each time.
// Peers that are not installed are left out: ADMesh (libadmesh-dev) does the whole job, OpenCASCADE
// (libocct-data-exchange-dev) joins exactly equal corners. "copy" is the baseline: the file's bytes read and
// its corners copied into one array.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <sched.h>
#include <sys/resource.h>
#include <time.h>

#include "core/mesh/Mesh.h"
#include "fileformat/stl/STLFile.h"

#ifdef HAVE_ADMESH
#include <admesh/stl.h>
#endif
#ifdef HAVE_OCCT
#include <Poly_Triangulation.hxx>
#include <RWStl.hxx>
#endif

namespace {

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
    bool isText;
};

constexpr Input kInputs[] = {
    {"in order 1M", 1000, 500, nullptr, false},
    {"in order 4M", 2000, 1000, nullptr, false},
    {"shuffled 1M", 1000, 500, ShuffleFacets, false},
    {"shuffled 4M", 2000, 1000, ShuffleFacets, false},
    {"jittered 1M", 1000, 500, JitterCorners, false},
    {"jittered 4M", 2000, 1000, JitterCorners, false},
    {"text 1M", 1000, 500, nullptr, true},
};

bool MakeInput(const Input& input, const QString& path)
{
    std::vector<Point> corners = TorusCorners(input.rings, input.sides);
    if (input.change)
        input.change(corners);
    return STLFile::SaveFile(path, corners, input.isText, 80);
}

// ---- one run

struct Outcome {
    double seconds = 0;
    double peakBytes = 0; // beyond what the process held before
    long vertices = 0;
};

/// The two runs of one process.
struct Result {
    double firstSeconds = 0;
    double againSeconds = 0;
    double peakBytes = 0;
    long vertices = 0;
};

double CpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + 1e-9 * double(now.tv_nsec);
}

double PeakBytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) * 1024;
}

template<class Work>
Outcome Measure(Work work)
{
    Outcome outcome;
    const double peakBefore = PeakBytes(), before = CpuSeconds();
    outcome.vertices = work();
    outcome.seconds = CpuSeconds() - before;
    outcome.peakBytes = PeakBytes() - peakBefore;
    return outcome;
}

Outcome LoadHere(const QString& path)
{
    return Measure([&] {
        Mesh mesh(0.03f);
        return STLFile::LoadFile(path, mesh, false, 80, false) ? long(mesh.GetVertexNum()) : -1;
    });
}

Outcome SaveHere(const QString& path, bool ascii)
{
    Mesh mesh(0.03f);
    if (!STLFile::LoadFile(path, mesh, true, 80, false))
        return {};
    return Measure(
        [&] { return STLFile::SaveFile(path + QStringLiteral(".out"), mesh, ascii, 80) ? 1L : -1; });
}

Outcome CopyCorners(const QString& path)
{
    return Measure([&] {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || !file.seek(84))
            return -1L;
        std::vector<Point> corners;
        corners.reserve(std::size_t(file.size()) / 50 * 3);
        std::vector<char> block(std::size_t(50) * 2048);
        for (qint64 size; (size = file.read(block.data(), qint64(block.size()))) > 0;)
            for (qint64 at = 0; at + 50 <= size; at += 50) {
                Point facet[3];
                std::memcpy(facet, &block[std::size_t(at) + 12], sizeof facet);
                corners.insert(corners.end(), facet, facet + 3);
            }
        return long(corners.size());
    });
}

#ifdef HAVE_ADMESH
Outcome LoadWithADMesh(const QString& path)
{
    QByteArray name = QFile::encodeName(path);
    return Measure([&] {
        stl_file stl;
        stl_open(&stl, name.data());
        stl_check_facets_exact(&stl);
        float tolerance = stl.stats.shortest_edge;
        for (int i = 0; i < 2 && stl.stats.connected_facets_3_edge < stl.stats.number_of_facets; ++i) {
            stl_check_facets_nearby(&stl, tolerance);
            tolerance += stl.stats.bounding_diameter / 10000;
        }
        stl_fix_normal_directions(&stl);
        stl_fix_normal_values(&stl);
        stl_calculate_volume(&stl);
        stl_generate_shared_vertices(&stl);
        const long vertices = stl.stats.shared_vertices;
        stl_close(&stl);
        return vertices;
    });
}
#endif

#ifdef HAVE_OCCT
Outcome LoadWithOpenCASCADE(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    return Measure([&] {
        const Handle(Poly_Triangulation) mesh = RWStl::ReadFile(name.constData());
        return mesh.IsNull() ? -1L : long(mesh->NbNodes());
    });
}

Outcome SaveWithOpenCASCADE(const QString& path, bool ascii)
{
    const Handle(Poly_Triangulation) mesh = RWStl::ReadFile(QFile::encodeName(path).constData());
    const OSD_Path out(QFile::encodeName(path + QStringLiteral(".out")).constData());
    return Measure(
        [&] { return (ascii ? RWStl::WriteAscii(mesh, out) : RWStl::WriteBinary(mesh, out)) ? 1L : -1L; });
}
#endif

// ---- jobs

enum class Job { Load, SaveBinary, SaveText };

constexpr const char* kJobNames[] = {"load", "save binary", "save text"};

struct Engine {
    const char* name;
    Outcome (*load)(const QString& path);
    Outcome (*save)(const QString& path, bool ascii);
};

constexpr Engine kEngines[] = {
    {"this library", LoadHere, SaveHere},
    {"copy", CopyCorners, nullptr},
#ifdef HAVE_ADMESH
    {"ADMesh", LoadWithADMesh, nullptr},
#endif
#ifdef HAVE_OCCT
    {"OpenCASCADE", LoadWithOpenCASCADE, SaveWithOpenCASCADE},
#endif
};

struct Task {
    Job job;
    std::size_t input;
    std::size_t engine;
};

std::vector<Task> AllTasks()
{
    std::vector<Task> tasks;
    for (std::size_t input = 0; input < std::size(kInputs); ++input)
        for (std::size_t engine = 0; engine < std::size(kEngines); ++engine) {
            const bool isBaseline = kEngines[engine].load == CopyCorners;
            if (!(isBaseline && kInputs[input].isText))
                tasks.push_back({Job::Load, input, engine});
        }
    for (const Job job : {Job::SaveBinary, Job::SaveText})
        for (std::size_t engine = 0; engine < std::size(kEngines); ++engine)
            if (kEngines[engine].save)
                tasks.push_back({job, 0, engine});
    return tasks;
}

std::string TitleOf(const Task& task)
{
    return std::string(kJobNames[int(task.job)]) + ", " + kInputs[task.input].name;
}

Outcome RunEngine(const Engine& engine, Job job, const QString& path)
{
    return job == Job::Load ? engine.load(path) : engine.save(path, job == Job::SaveText);
}

// The child's part: one task, twice, and one line of numbers.
int RunTask(const QStringList& arguments)
{
    const Engine& engine = kEngines[arguments[3].toInt()];
    const Job job = Job(arguments[2].toInt());
    const Outcome first = RunEngine(engine, job, arguments[4]);
    const Outcome again = RunEngine(engine, job, arguments[4]);
    std::printf("%.9f %.9f %.0f %ld\n", first.seconds, again.seconds, first.peakBytes, again.vertices);
    return again.vertices > 0 ? 0 : 1;
}

bool StartTask(const Task& task, const QString& path, Result& result)
{
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(
        QCoreApplication::applicationFilePath(),
        {QStringLiteral("--task"), QString::number(int(task.job)), QString::number(task.engine), path});
    if (!child.waitForFinished(-1) || child.exitCode() != 0)
        return false;
    // Peers chat on standard output; the numbers are the last line.
    const QByteArray line = child.readAllStandardOutput().trimmed().split('\n').last();
    return std::sscanf(line.constData(), "%lf %lf %lf %ld", &result.firstSeconds, &result.againSeconds,
                       &result.peakBytes, &result.vertices) == 4;
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
    double oursFirst = NAN, oursAgain = NAN;
    for (std::size_t i = 0; i < tasks.size(); ++i) {
        const Input& input = kInputs[tasks[i].input];
        const double facets = 2.0 * input.rings * input.sides;
        const double first = 1e9 * Median(results[i], &Result::firstSeconds) / facets;
        const double again = 1e9 * Median(results[i], &Result::againSeconds) / facets;
        if (tasks[i].engine == 0) {
            oursFirst = first;
            oursAgain = again;
        }
        std::printf("%-24s %-13s %9.1f %9.2f %9.1f %9.2f %13.1f %9.0f\n", TitleOf(tasks[i]).c_str(),
                    kEngines[tasks[i].engine].name, first, first / oursFirst, again, again / oursAgain,
                    Median(results[i], &Result::peakBytes) / facets, Median(results[i], &Result::vertices));
    }
}

void PinToLastCore()
{
    cpu_set_t cores;
    if (sched_getaffinity(0, sizeof cores, &cores) != 0)
        return;
    int last = CPU_SETSIZE - 1;
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
        if (paths.emplace(task.input, directory.filePath(QStringLiteral("%1.stl").arg(task.input))).second &&
            !MakeInput(kInputs[task.input], paths[task.input]))
            return 1;
    PinToLastCore();
    std::vector<std::vector<Result>> results(tasks.size());
    for (int round = 0; round < options.rounds; ++round)
        for (std::size_t i = 0; i < tasks.size(); ++i) {
            Result result;
            if (StartTask(tasks[i], paths[tasks[i].input], result))
                results[i].push_back(result);
            QFile::remove(paths[tasks[i].input] + QStringLiteral(".out"));
        }
    Report(tasks, results);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 5 && arguments[1] == QLatin1String("--task"))
        return RunTask(arguments);
    return Compare(ReadOptions(arguments));
}
