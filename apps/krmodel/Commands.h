#pragma once

#include "apps/krmodel/CommandLine.h"

/// One function a command: it adds the command, its options and its work to the command line. The work throws
/// Failure when a file cannot be worked on.
namespace krmodel {

/// Prints a table for each input. Goes on after a failure and ends with the first failure's code.
void AddInfo(CLI::App& app, Command& command);

/// Tells of each input whether it can be printed, and why not. Goes on after a failure.
void AddCheck(CLI::App& app, Command& command);

/// Writes the input in another format or variant.
void AddConvert(CLI::App& app, Command& command);

/// Draws a picture of the input.
void AddPreview(CLI::App& app, Command& command);

/// Makes a model from a picture.
void AddRelief(CLI::App& app, Command& command);

/// Makes a texture file from a picture, prints what one holds, takes its picture out.
void AddTexture(CLI::App& app, Command& command);

/// Prints what a path file holds, or draws it.
void AddPaths(CLI::App& app, Command& command);

/// Prints which formats there are.
void AddFormats(CLI::App& app, Command& command);

/// Prints the manual page or a shell's completions, for those who pack the program.
void AddManual(CLI::App& app, Command& command);

} // namespace krmodel
