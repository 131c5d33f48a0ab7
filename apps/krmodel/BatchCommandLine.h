#pragma once

#include "apps/krmodel/Batch.h"
#include "apps/krmodel/CommandLine.h"

/// Options of commands that read files.
namespace krmodel {

/// Adds --max-memory, --max-time, --max-input and --max-output.
void AddLimits(CLI::App& verb, BatchOptions& options);

/// Adds --json.
void AddJson(CLI::App& verb, BatchOptions& options);

/// Adds -j, --jobs.
void AddJobs(CLI::App& verb, BatchOptions& options);

/// Adds --quiet.
/// @param help  what it does
Option AddQuiet(CLI::App& verb, BatchOptions& options,
                const char* help = "show no progress, which a terminal sees of what takes its time");

} // namespace krmodel
