#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include <QByteArray>
#include <QFile>
#include <QString>

#include "fileformat/path/DXFPathFile.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Require.h"
#include "tests/path/PlainPathFile.h"

// DXFPathFile over any bytes, compared with plain reading; what was read is written, compared with plain
// writing.

namespace {

using fuzz::Require;
using Names = std::map<int, QString>;

std::map<int, std::string> InUtf8(const Names& names)
{
    std::map<int, std::string> texts;
    for (const auto& [id, name] : names)
        texts[id] = name.toStdString();
    return texts;
}

QByteArray BytesOf(const QString& path)
{
    QFile file(path);
    Require(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::MemoryFile kFile;
    static const QString kName = kFile.Name();
    kFile.Write(data, size);
    DXFPathFile::Paths paths = {{1, {}}};
    Names names = {{1, QString()}};
    const bool isRead = DXFPathFile::ReadDXFPathFile(paths, names, kName);
    const auto expected = test::ReadPathsPlainly(
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    Require(isRead == expected.has_value());
    Require(names == (expected ? expected->names : Names()));
    Require(test::HaveSameBits(paths, expected ? expected->paths : DXFPathFile::Paths()));
    if (isRead) {
        const std::map<int, std::string> texts = InUtf8(names);
        Require(DXFPathFile::WriteDXFPathFile(paths, texts, kName));
        Require(BytesOf(kName) == test::WritePathsPlainly(paths, texts));
    }
    return 0;
}
