#pragma once

#include <initializer_list>
#include <random>
#include <string>

#include <QByteArray>

namespace test {

/// Random model parts, plausible as a whole: several objects with long rows of plain vertices and triangles,
/// components, builds, metadata and colours. Most documents hold some oddities, of all the kinds that XML
/// allows and some that it does not; a few are cut short or have bytes changed.
class RandomModelPart {
public:
    explicit RandomModelPart(unsigned seed) : m_random(seed) {}

    QByteArray Document();

private:
    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    bool Chance(int percent) { return Below(100) < percent; }
    /// Whether to do something odd: never in a plain document, seldom in others.
    bool IsOdd(int perThousand) { return m_isOdd && Below(1000) < perThousand; }
    std::string OneOf(std::initializer_list<const char*> choices);

    std::string Declaration();
    std::string DocumentType();
    std::string Space();
    std::string Gap();
    std::string OddContent();
    std::string Number();
    std::string OddNumber();
    std::string Index();
    std::string OddIndex();
    std::string Id();
    std::string Transform();
    std::string Attribute(const std::string& name, const std::string& value);
    std::string Tag(const std::string& name, const std::string& attributes);
    std::string Element(const std::string& name, const std::string& attributes, const std::string& content);
    std::string Vertex();
    std::string Triangle();
    std::string Rows();
    std::string Mesh();
    std::string Components();
    std::string Object();
    std::string Build();
    std::string Metadata();
    std::string Materials();
    std::string Textures();
    std::string Model();
    QByteArray Encoded(const std::string& text);
    void Mutate(QByteArray& document);

    std::mt19937 m_random;
    bool m_isOdd = false;
};

} // namespace test
