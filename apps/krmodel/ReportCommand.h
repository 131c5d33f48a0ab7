#pragma once

#include "apps/krmodel/BatchCommandLine.h"
#include "apps/krmodel/ModelFile.h"

namespace krmodel {

/// What a command has to tell of a model, in the form asked for. May change the model.
using Report = QByteArray (*)(const QString& fileName, LoadedModel& loaded, Form form);

/// Adds a command that prints a report of each model file that it is given.
/// @param usualForm  the form without --json
CLI::App& AddReport(CLI::App& app, const char* name, const char* help, Form usualForm, Report report,
                    Command& command);

} // namespace krmodel
