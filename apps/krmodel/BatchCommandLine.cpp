#include "apps/krmodel/BatchCommandLine.h"

#include <algorithm>
#include <thread>

namespace krmodel {

namespace {

constexpr int kMebibyteBits = 20;
constexpr double kMostMebibytes = double(qint64(1) << 40);
constexpr double kMostSeconds = 1e9;
constexpr double kMostJobs = 1024;

void AddBytes(CLI::App& verb, const NumberOption& option, const std::function<void(qint64)>& take,
              const std::string& usual)
{
    const auto takeNumbers = [take](const std::vector<double>& mebibytes) {
        take(qint64(mebibytes[0]) << kMebibyteBits);
    };
    AddNumbers(verb, option, 1, takeNumbers).Default(usual);
}

size_t AllCores()
{
    return std::max(1U, std::thread::hardware_concurrency());
}

} // namespace

void AddLimits(CLI::App& verb, BatchOptions& options)
{
    constexpr NumberOption::Kind kWhole = NumberOption::Kind::Whole;
    Limits& limits = options.limits;
    AddBytes(
        verb,
        {"--max-memory", "MiB", 0, kMostMebibytes,
         "the most memory that the work on one file may take; 0: as much as there is", kWhole},
        [&options](qint64 bytes) {
            options.limits.memoryBytes = bytes;
            options.sharesMemory = false;
        },
        "half of the computer's, shared by the files at work");
    AddNumber(verb,
              {"--max-time", "S", 0, kMostSeconds,
               "the most seconds of processor time that the work on one file may take; 0: any", kWhole},
              limits.seconds);
    AddBytes(
        verb,
        {"--max-input", "MiB", 0, kMostMebibytes,
         "the largest input file that is read, without what it names; 0: any", kWhole},
        [&options](qint64 bytes) { options.inputBytes = bytes; }, "0");
    AddBytes(
        verb,
        {"--max-output", "MiB", 0, kMostMebibytes, "the largest file that may be written; 0: any", kWhole},
        [&limits](qint64 bytes) { limits.fileBytes = bytes; },
        std::to_string(limits.fileBytes >> kMebibyteBits));
}

void AddJson(CLI::App& verb, BatchOptions& options)
{
    AddFlag(
        verb, "--json", [&options] { options.form = Form::Json; },
        "print one JSON object a line and file, for programs to read, also for a file that fails");
}

void AddJobs(CLI::App& verb, BatchOptions& options)
{
    AddNumbers(verb,
               {"-j,--jobs", "N", 0, kMostJobs, "files to work on at a time; 0: as many as there are cores",
                NumberOption::Kind::Whole},
               1,
               [&options](const std::vector<double>& jobs) {
                   options.atOnce = jobs[0] == 0 ? AllCores() : size_t(jobs[0]);
               })
        .Default("1");
}

Option AddQuiet(CLI::App& verb, BatchOptions& options, const char* help)
{
    return AddFlag(verb, "--quiet", options.isQuiet, help);
}

} // namespace krmodel
