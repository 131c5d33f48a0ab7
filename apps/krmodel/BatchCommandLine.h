#pragma once

#include "apps/krmodel/Batch.h"
#include "apps/krmodel/CommandLine.h"

/// Options of commands that read files.
namespace krmodel {

/// Adds --max-memory, --max-time and --max-output.
void AddLimits(CLI::App& verb, BatchOptions& options);

/// Adds --json.
void AddJson(CLI::App& verb, BatchOptions& options);

/// Adds -j, --jobs.
void AddJobs(CLI::App& verb, BatchOptions& options);

} // namespace krmodel
