#pragma once

#include <functional>

#include <QString>

#include "apps/krmodel/ExitCode.h"

namespace krmodel {

/// Does some work. An exception ends it with a sentence on standard error.
/// @return the work's code; after an exception a Failure's own, Stopped for any other
ExitCode Guard(const std::function<ExitCode()>& work);

/// The same; @p report gets the sentence.
ExitCode Guard(const std::function<ExitCode()>& work, const std::function<void(const QString&)>& report);

/// Prints a sentence on standard error, behind the program's name.
void PrintError(const QString& sentence);

} // namespace krmodel
