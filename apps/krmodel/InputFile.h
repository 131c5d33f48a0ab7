#pragma once

#include <QString>

namespace krmodel {

/// Tells what cannot be opened from what cannot be understood, for readers that do not.
/// @throws Failure with CannotOpen
void RequireReadable(const QString& fileName);

} // namespace krmodel
