#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "fuzz/CadChild.h"
#include "fuzz/NamedMemoryFile.h"

// STEPAndIGESFile::LoadFile over any bytes of an IGES file. Each is loaded in a process of its own; see
// CadChild.h. A file whose sections do not agree with its last line never gets to OpenCASCADE, so that line
// is written anew for seven inputs in eight.

namespace {

constexpr std::size_t kLetterColumn = 72;
constexpr std::string_view kSections = "SGDP";

// The lines before the terminate record, and such a record that counts them.
std::string WithTrueCounts(std::string_view text)
{
    std::array<unsigned, kSections.size()> counts = {};
    std::string result;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1);
        text.remove_prefix(line.size());
        const char letter = line.size() > kLetterColumn ? line[kLetterColumn] : ' ';
        if (letter == 'T')
            continue;
        result += line;
        const std::size_t section = kSections.find(letter);
        if (section != std::string_view::npos)
            ++counts[section];
    }
    if (!result.empty() && result.back() != '\n')
        result += '\n';
    std::array<char, 90> record = {};
    std::snprintf(record.data(), record.size(), "S%7uG%7uD%7uP%7u%40sT%7u\n", counts[0], counts[1], counts[2],
                  counts[3], "", 1u);
    return result + record.data();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::NamedMemoryFile kFile(QStringLiteral("model.iges"));
    static const bool kIsReady = (fuzz::PrepareForCadChildren(), true);
    static_cast<void>(kIsReady);
    if (fuzz::IsOneOfEight(data, size)) {
        kFile.Write(data, size);
    } else {
        const std::string text = WithTrueCounts({reinterpret_cast<const char*>(data), size});
        kFile.Write(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    }
    fuzz::RequireCadLoad(kFile.Name());
    return 0;
}
