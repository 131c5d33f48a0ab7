#include <cstdint>

#include <QXmlStreamReader>

#include "fuzz/Require.h"
#include "tests/3mf/ModelSupport.h"
#include "tests/3mf/PlainModelReader.h"

// ParserTexture and the other parsers of single elements, driven by a host's own reader over any bytes and
// compared with plain reading. What each is called for need not be its element.

namespace {

using fuzz::Require;

template<class Model>
bool ParseElement(Model& model, QXmlStreamReader& reader, int choice)
{
    switch (choice) {
    case 0:
        return model.ParserObject(reader);
    case 1:
        return model.ParserComponent(reader, 7);
    case 2:
        return model.ParserBuild(reader);
    default:
        return model.ParserTexture(reader);
    }
}

int ParserOf(const QXmlStreamReader& reader)
{
    constexpr const char* kNames[] = {"object", "components", "build", "texture2dgroup", "other"};
    for (int i = 0; i < 5; ++i) {
        if (reader.name() == QLatin1String(kNames[i]))
            return i;
    }
    return -1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto document =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<int>(size));
    QXmlStreamReader reader(document), plainReader(document);
    test::OwnedModel model;
    test::PlainModel plain;
    while (!reader.atEnd()) {
        reader.readNext();
        plainReader.readNext();
        const int choice = reader.isStartElement() ? ParserOf(reader) : -1;
        if (choice < 0)
            continue;
        Require(ParseElement(model, reader, choice) == ParseElement(plain, plainReader, choice));
        Require(reader.tokenType() == plainReader.tokenType());
        Require(reader.characterOffset() == plainReader.characterOffset());
    }
    Require(Difference(plain, model).empty());
    return 0;
}
