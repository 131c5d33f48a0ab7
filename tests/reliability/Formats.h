#pragma once

#include <iosfwd>
#include <vector>

#include <QByteArray>
#include <QString>

// Every way in and out of the library behind one shape, for tests of what holds for all of them alike.

namespace test {

/// What does most of a reader's work.
enum class Work { Own, QtPictures, OpenCascade };

/// A reader with a file to read.
struct Reader {
    const char* name;     ///< in names of tests
    const char* fileName; ///< of the sample, suffix included
    Work work;
    /// Writes the sample, and beside it what it names.
    void (*writeSample)(const QString& path);
    /// Reads into something that is filled already. Checks that it is as it was when the file is refused, and
    /// whole when not.
    /// @return a digest of every number and text that was read; empty when the file is refused
    QByteArray (*read)(const QString& path);
};

/// A writer with something to write.
struct Writer {
    const char* name;
    const char* fileName;
    bool (*write)(const QString& path);
};

/// All but the readers of CAD files, in which OpenCASCADE does the work.
const std::vector<Reader>& Readers();
/// Those too.
const std::vector<Reader>& AllReaders();
const std::vector<Writer>& Writers();

/// One of them all.
/// @throws std::out_of_range when none is named so
const Reader& ReaderNamed(const char* name);

void PrintTo(const Reader& reader, std::ostream* stream);
void PrintTo(const Writer& writer, std::ostream* stream);

} // namespace test

/// Names the cases of a suite after their readers or writers.
struct NameOfFormat {
    template<typename Info>
    std::string operator()(const Info& info) const
    {
        return info.param.name;
    }
};
