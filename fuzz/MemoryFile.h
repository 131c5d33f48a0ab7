#pragma once

#include <cstddef>
#include <cstdint>

#include <QByteArray>
#include <QString>

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/Require.h"

namespace fuzz {

/// The file in memory of a fuzz target, one a process: readers take names, and nothing has to touch a disk.
/// Its name always ends in "/100", so that its bytes can name their own file.
class MemoryFile {
public:
    MemoryFile()
    {
        const int descriptor = memfd_create("fuzz", 0);
        Require(dup2(descriptor, kDescriptor) == kDescriptor);
        close(descriptor);
    }

    void Write(const std::uint8_t* data, std::size_t size) const
    {
        Require(ftruncate(kDescriptor, 0) == 0);
        Require(pwrite(kDescriptor, data, size, 0) == static_cast<ssize_t>(size));
    }
    QByteArray Read() const
    {
        QByteArray bytes(static_cast<int>(lseek(kDescriptor, 0, SEEK_END)), '\0');
        Require(pread(kDescriptor, bytes.data(), static_cast<size_t>(bytes.size()), 0) == bytes.size());
        return bytes;
    }
    QString Name() const { return QStringLiteral("/proc/self/fd/%1").arg(kDescriptor); }

private:
    static constexpr int kDescriptor = 100;
};

} // namespace fuzz
