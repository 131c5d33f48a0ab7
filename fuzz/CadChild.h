#pragma once

#include <QString>

namespace fuzz {

/// Gets OpenCASCADE ready for children: it is loaded, has made its readers, and starts no thread.
void PrepareForCadChildren();

/// Loads @p fileName in a process of its own and aborts this one when that fails: a crash, an exception that
/// is not promised or a mesh that is not whole. OpenCASCADE follows null pointers and loops without end in
/// many damaged files that it can name an entity in; what dies with OpenCASCADE at work is therefore no
/// finding.
void RequireCadLoad(const QString& fileName);

} // namespace fuzz
