#pragma once

#include <QString>

namespace CLI {
class App;
}

/// The manual page and what shells need to complete a command line, made from the same table as --help.
namespace krmodel {

/// A page for man(1), in its macros.
QString ManualPage(const CLI::App& app);

QString BashCompletion(const CLI::App& app);
QString ZshCompletion(const CLI::App& app);
QString FishCompletion(const CLI::App& app);

} // namespace krmodel
