#pragma once

#include <stdexcept>

#include <QString>

#include "apps/krmodel/ExitCode.h"

namespace krmodel {

/// Why a file could not be worked on: a sentence for a person, and the exit code for a script.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const QString& message) : std::runtime_error(message.toStdString()), m_code(code)
    {}

    ExitCode GetCode() const { return m_code; }

private:
    ExitCode m_code;
};

} // namespace krmodel
