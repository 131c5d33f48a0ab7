#pragma once

#include <optional>

#include "apps/krmodel/CommandLine.h"

namespace krmodel {

/// Reads the command line, its texts being UTF-8. Prints help, the version, or what is wrong.
/// @return how to end the program, or nothing when @p command is to be carried out
std::optional<ExitCode> ParseArguments(int argc, const char* const* argv, Command& command);

} // namespace krmodel
