#include <cstdio>
#include <cstdlib>
#include <functional>
#include <new>

#include <QFile>
#include <QFileInfo>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/common/Directory.h"
#include "tests/reliability/SlowInputs.h"

// Reads files that ask for much work, each in a process of its own, and prints the processor time and the
// memory that they took: SlowInputs [BYTES [WORD]], 1 MiB as a rule, those whose names have the word in them.

namespace {

using namespace test;

constexpr const char* kEnds[] = {"read", "refused", "out of memory"};

int EndOfRead(const SlowInput& input, const QString& path)
{
    try {
        return input.read(path).isEmpty() ? 1 : 0;
    } catch (const std::bad_alloc&) {
        return 2;
    }
}

/// What a process of its own ends with, and what it took.
int InChild(const std::function<int()>& work, rusage& usage)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(work());
    int status = -1;
    return wait4(child, &status, 0, &usage) == child ? status : -1;
}

bool Write(const SlowInput& input, int size, const QString& path)
{
    // A child begins with the memory of its parent, so this one keeps none of the file.
    rusage usage;
    return InChild(
               [&] {
                   QFile file(path);
                   const bool isOpen = file.open(QIODevice::WriteOnly);
                   const QByteArray bytes = input.make(size);
                   return isOpen && file.write(bytes) == bytes.size() ? 0 : 1;
               },
               usage) == 0;
}

double Seconds(const timeval& time)
{
    return double(time.tv_sec) + 1e-6 * double(time.tv_usec);
}

} // namespace

int main(int argc, char** argv)
{
    const int size = argc > 1 ? int(std::strtol(argv[1], nullptr, 10)) : 1 << 20;
    const QByteArray word = argc > 2 ? argv[2] : "";
    std::printf("%-28s %10s %9s %9s\n", "file", "bytes", "seconds", "MiB");
    bool isAlive = true;
    for (const SlowInput& input : SlowInputs()) {
        if (!QByteArray(input.name).contains(word))
            continue;
        const Directory directory;
        const QString path = directory.Path(QString::fromLatin1(input.fileName));
        if (!Write(input, size, path)) {
            std::fprintf(stderr, "%s: cannot be made\n", input.name);
            return 1;
        }
        rusage usage = {};
        const int status = InChild([&] { return EndOfRead(input, path); }, usage);
        isAlive = isAlive && WIFEXITED(status);
        std::printf("%-28s %10lld %9.2f %9.0f  %s\n", input.name, QFileInfo(path).size(),
                    Seconds(usage.ru_utime) + Seconds(usage.ru_stime), double(usage.ru_maxrss) / 1024,
                    WIFEXITED(status) ? kEnds[WEXITSTATUS(status)] : "died");
        std::fflush(stdout);
    }
    return isAlive ? 0 : 1;
}
