#pragma once

#include <Standard_Handle.hxx>

class XSControl_WorkSession;

namespace kr::cad {

/// Whether OpenCASCADE comes to an end with the STEP files that a file names for its parts, and those that
/// they name in turn: it follows names that lead back to where it was without end, and waits at a pipe. A
/// file that is missing does no harm.
/// @param session  has read the file and not transferred it yet
[[nodiscard]] bool CanFollowExternalFiles(const Handle(XSControl_WorkSession) & session);

} // namespace kr::cad
