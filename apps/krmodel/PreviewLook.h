#pragma once

#include "apps/krmodel/Camera.h"
#include "apps/krmodel/CommandLine.h"
#include "apps/krmodel/Look.h"

/// Options that say how a picture of a model looks.
namespace krmodel {

/// Adds --view: a name, or two angles.
Option AddView(CLI::App& verb, View& view);

/// Adds --background: a colour, or none.
Option AddBackground(CLI::App& verb, Background& background);

} // namespace krmodel
