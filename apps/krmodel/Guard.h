#pragma once

#include <functional>

#include "apps/krmodel/ExitCode.h"

namespace krmodel {

/// Does some work. An exception ends it with a sentence on the error stream.
/// @return the work's code; after an exception a Failure's own, NotReadable when memory ran out, Unexpected
/// for
///         any other
ExitCode Guard(const std::function<ExitCode()>& work);

} // namespace krmodel
