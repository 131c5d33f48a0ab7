#pragma once

#include "apps/krmodel/Arguments.h"

namespace krmodel {

/// Prints a table for each input. Goes on after a failure and ends with the first failure's code.
ExitCode RunInfo(const Arguments& arguments);

/// Writes the input in another format or variant. @throws Failure
ExitCode RunConvert(const Arguments& arguments);

/// Draws a picture of the input. @throws Failure
ExitCode RunPreview(const Arguments& arguments);

} // namespace krmodel
