#pragma once

#include "fileformat/3mf/Model3MF.h"

namespace test {

/// Model3MF::LoadFile done plainly: every entry is opened by its name in an archive opened for it, and read
/// whole, whether somebody needs it or not.
bool LoadPlainly(Model3MF& package, const QString& fileName);

} // namespace test
