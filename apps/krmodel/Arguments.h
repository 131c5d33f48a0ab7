#pragma once

#include <optional>

#include <QSize>
#include <QStringList>

#include "apps/krmodel/Camera.h"
#include "apps/krmodel/ExitCode.h"
#include "apps/krmodel/Formats.h"
#include "apps/krmodel/Jobs.h"

namespace krmodel {

struct Arguments;

using Command = ExitCode (*)(const Arguments& arguments);

/// The command line, understood.
struct Arguments {
    Command command = nullptr;
    QStringList inputs;
    QString output;
    std::optional<Encoding> encoding; ///< none when the person did not say
    std::optional<QSize> size;        ///< none when the person did not say
    const View* view = nullptr;
    bool wantsThumbnail = false;
    size_t atOnce = 1; ///< inputs
    Limits limits = UsualLimits();
};

/// Reads the command line, its texts being UTF-8. Prints help, the version, or what is wrong.
/// @return how to end the program, or nothing when @p arguments are to be carried out
std::optional<ExitCode> ParseArguments(int argc, const char* const* argv, Arguments& arguments);

} // namespace krmodel
