#pragma once

#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include "fuzz/MemoryFile.h"

namespace fuzz {

/// A file in memory under a name of its own, for readers that go by the suffix.
class NamedMemoryFile : public MemoryFile {
public:
    explicit NamedMemoryFile(const QString& name) : m_name(m_directory.filePath(name))
    {
        Require(QFile::link(MemoryFile::Name(), m_name));
    }
    QString Name() const { return m_name; }

private:
    QTemporaryDir m_directory;
    QString m_name;
};

} // namespace fuzz
