#pragma once

#include <vector>

#include <QByteArray>
#include <QString>

namespace test {

/// A file that asks for as much work as its size allows.
struct SlowInput {
    const char* name;
    const char* fileName;
    /// @param size  of the file in bytes, about
    QByteArray (*make)(int size);
    /// As Reader::read of Formats.h; empty when the file is refused.
    QByteArray (*read)(const QString& path);
    bool isRead; ///< when it is small, and there is memory for it
};

const std::vector<SlowInput>& SlowInputs();

} // namespace test
