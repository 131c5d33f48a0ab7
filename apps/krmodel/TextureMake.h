#pragma once

#include "apps/krmodel/CommandLine.h"

namespace krmodel {

/// Adds the command that makes a texture file from a picture.
void AddTextureMake(CLI::App& texture, Command& command);

} // namespace krmodel
