#include "tests/3mf/RandomModelPart.h"

#include <QTextCodec>

namespace test {

namespace {

// Each entity is eight of the one before.
constexpr char kManyEntities[] =
    "<!DOCTYPE model [<!ENTITY a 'aaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;'>"
    "<!ENTITY c '&b;&b;&b;&b;&b;&b;&b;&b;'><!ENTITY d '&c;&c;&c;&c;&c;&c;&c;&c;'>"
    "<!ENTITY row '&d;&d;&d;&d;&d;&d;&d;&d;'>]>";

} // namespace

std::string RandomModelPart::OneOf(std::initializer_list<const char*> choices)
{
    return choices.begin()[Below(static_cast<int>(choices.size()))];
}

QByteArray RandomModelPart::Document()
{
    m_isOdd = Chance(65);
    std::string text = Declaration() + DocumentType() + Gap();
    text += Model();
    if (IsOdd(60))
        text += Rows();
    text += Gap();
    QByteArray document = Encoded(text);
    if (m_isOdd && Chance(25))
        Mutate(document);
    return document;
}

std::string RandomModelPart::Declaration()
{
    if (!m_isOdd)
        return OneOf({"", "<?xml version=\"1.0\"?>\n", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"});
    return (Chance(10) ? "\xEF\xBB\xBF" : "") +
           OneOf({"",
                  "",
                  "<?xml version=\"1.0\"?>",
                  "<?xml version='1.0' encoding='utf-8' standalone='yes'?>",
                  "<?xml  version = \"1.0\"\tencoding\n=\n\"Utf-8\" ?>",
                  "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>",
                  "<?xml version=\"1.0\" encoding=\"windows-1252\"?>",
                  "<?xml version=\"1.0\" encoding=\"UTF-16\"?>",
                  "<?xml version=\"1.0\" encoding=\"UTF-7\"?>",
                  "<?xml version=\"1.0\" encoding=\"IBM037\"?>",
                  "<?xml version=\"1.0\" encoding=\"utf8\"?>",
                  "<?xml version=\"1.0\" encoding=\"UTF-8\" encoding=\"UTF-16\"?>",
                  "<?xml version=\"1.0\" encoding=\"UTF-8\" encoding=\"UTF-7\"?>",
                  "<?xml version=\"1.0\" encoding=\"UTF-8\" encoding=\"Shift_JIS\"?>",
                  "<?xml version=\"1.0\" encoding=\"no such\"?>",
                  "<?xml version=\"1.1\" encoding=\"UTF-8\"?>",
                  "<?xml version=\"encoding\" encoding=\"UTF-8\"?>",
                  "<?xml version=\"1.0\" encoding='UTF-8\"?>",
                  "<?xml version=\"1.0\" encoding=\"UTF-8\"",
                  "<?xml\tversion=\"1.0\"?>",
                  "<?xml?>",
                  " <?xml version=\"1.0\"?>"});
}

std::string RandomModelPart::DocumentType()
{
    if (!IsOdd(50))
        return "";
    return OneOf({"<!DOCTYPE model>", "<!DOCTYPE model SYSTEM \"http://nowhere/m.dtd\">",
                  "<!DOCTYPE model [<!ATTLIST vertex y CDATA \"4.5\">]>",
                  "<!DOCTYPE model [<!ATTLIST object id CDATA \"3\" name CDATA \"named\">]>",
                  "<!DOCTYPE model [<!ENTITY row '<vertex x=\"1\" y=\"2\" z=\"3\"/>'>]>", kManyEntities,
                  "<!DOCTYPE model ["});
}

// What stands between attributes.
std::string RandomModelPart::Space()
{
    if (IsOdd(4))
        return OneOf({"", "\t", "\n", "\r", "\r\n", "   ", "\f", "\xC2\xA0"});
    return " ";
}

// What stands between elements.
std::string RandomModelPart::Gap()
{
    if (IsOdd(6))
        return OddContent();
    if (IsOdd(20))
        return OneOf({"\r", "\r\n", "\t\t", " \n ", "\n\n\n"});
    return Chance(70) ? "\n" : "";
}

std::string RandomModelPart::OddContent()
{
    switch (Below(14)) {
    case 0:
        return "text & more"; // a bare ampersand is an error
    case 1:
        return OneOf({"text", "&lt;vertex x=\"1\"/&gt;", "&#65;", "&row;", "]]>", "\xC3\xA4", "\xFF", "<<"});
    case 2:
        return "<!-- " + Rows() + " -->";
    case 3:
        return OneOf({"<!---->", "<!-->", "<!--->-->", "<!-- -- -->", "<!--x--->", "<!-- ", "<!- x -->"});
    case 4:
        return Chance(30) ? "<![CDATA[" + Rows() + "]]>" : "";
    case 5:
        return Chance(30) ? OneOf({"<?kr-set-aside 0?>", "<?kr-set-aside 1?>", "<?other?>",
                                   "<?kr-set-aside <vertex x=\"1\" y=\"1\" z=\"1\"/> ?>", "<?xml x?>"})
                          : "";
    case 6:
        return OneOf({"<other/>", "<other>", "</other>", "<p:other xmlns:p='urn:p'/>", "<p:other/>"});
    case 7:
        return "<vertices a=\"1\">" + Vertex() + "</vertices>";
    case 8:
        return "<p:vertex xmlns:p='urn:p' p:x='1' y='2' p:z='3'/>";
    case 9:
        return "<vertex x=\"1\" y=\"2\" z=\"3\">" + Vertex() + "</vertex>";
    case 10:
        return OneOf({"<vertexes x=\"1\" y=\"2\" z=\"3\"/>", "<triangles/>",
                      "<Vertex x=\"1\" y=\"2\" z=\"3\"/>", "<triangle/>", "<vertex/>",
                      "<vertex x=\"1\" y=\"2\" z=\"3\" / >", "< vertex x=\"1\"/>"});
    case 11:
        return OneOf({"</object>", "</mesh>", "<mesh>", "<object>", "</build>", "<build>", "<components>"});
    case 12:
        return Rows();
    default:
        return Metadata();
    }
}

std::string RandomModelPart::Number()
{
    if (IsOdd(10))
        return OddNumber();
    std::string number = Chance(30) ? "-" : "";
    number += std::to_string(Below(Chance(70) ? 200 : 1'000'000));
    if (Chance(70))
        number += "." + std::to_string(Below(Chance(50) ? 1000 : 1'000'000));
    if (Chance(5))
        number += OneOf({"e1", "E-2", "e+03", "e-7"});
    return number;
}

std::string RandomModelPart::OddNumber()
{
    return OneOf({"",
                  " 1",
                  "1 ",
                  "+5",
                  "--5",
                  ".5",
                  "5.",
                  ".",
                  "-.5",
                  "+.5e1",
                  "1e",
                  "1e+",
                  "e5",
                  "0x10",
                  "1,5",
                  "inf",
                  "-inf",
                  "+inf",
                  "nan",
                  "-nan",
                  "NaN",
                  "INF",
                  "infinity",
                  "1e400",
                  "-1e400",
                  "1e-400",
                  "1e-46",
                  "3.5e38",
                  "-0",
                  "-0.0",
                  "00012.500",
                  "1.5abc",
                  "1;5",
                  "\t7\n",
                  "12345678",
                  "123456789",
                  "1234567890",
                  "0.1234567",
                  "0.12345678",
                  "16777217",
                  "0.1000000014901161",
                  "9007199254740993",
                  "123456789012345678901234567890",
                  "1.17549435e-38",
                  "1e-45",
                  "&#49;",
                  "1&#x30;",
                  "&amp;",
                  "&lt;",
                  "&row;",
                  "\302\2405",
                  "\xD9\xA1",
                  "0.00000000000000000000000000000000000000000000000000000000000000000000000000000001",
                  "1000000000000000000000000000000000000000000000000000000000000000000000000000000000"});
}

std::string RandomModelPart::Index()
{
    return IsOdd(10) ? OddIndex() : std::to_string(Below(Chance(95) ? 30 : 100));
}

std::string RandomModelPart::OddIndex()
{
    return OneOf(
        {"",           "-1",         "+3",         " 2",         "2 ",          "007",
         "0000000001", "1e0",        "1.0",        "0x1",        "abc",         "12345678",
         "123456789",  "1234567890", "2147483647", "2147483648", "-2147483649", "99999999999999999999",
         "&#50;",      "1,000",      "\t4",        "\302\2401",  "1_0"});
}

// Few enough that ids meet.
std::string RandomModelPart::Id()
{
    return IsOdd(30) ? OddIndex() : std::to_string(Below(6));
}

std::string RandomModelPart::Transform()
{
    std::string text;
    const int count = IsOdd(200) ? Below(20) : 12;
    for (int i = 0; i < count; ++i)
        text += (i > 0 ? IsOdd(20) ? OneOf({"  ", "\t", "\n", "", "&#9;", ","}) : " " : "") + Number();
    return text;
}

std::string RandomModelPart::Attribute(const std::string& name, const std::string& value)
{
    if (IsOdd(3))
        return "";
    std::string attribute = Space() + name + "=";
    if (IsOdd(3))
        attribute = OneOf({" p:", " X", " xml:"}) + name + OneOf({"=", " = ", "\n=\t"});
    const char quote = IsOdd(4) ? '\'' : '"';
    attribute += quote + value + quote;
    if (IsOdd(2))
        attribute += " " + name + "=\"5\"";
    if (IsOdd(2))
        attribute += OneOf({" p:", " q:"}) + name + "=\"6\"";
    return attribute;
}

std::string RandomModelPart::Tag(const std::string& name, const std::string& attributes)
{
    const std::string end = IsOdd(5) ? OneOf({" />", "\n/>", "></wrong>", "/ >", ">", ""}) : "/>";
    if (IsOdd(4))
        return "<" + name + attributes + ">" + OneOf({"", " ", "text", "<!-- -->"}) + "</" + name + ">";
    return (IsOdd(3) ? "<p:" : "<") + name + attributes + end;
}

std::string RandomModelPart::Element(const std::string& name, const std::string& attributes,
                                     const std::string& content)
{
    if (IsOdd(5))
        return content;
    const std::string prefix = IsOdd(20) ? "p:" : "";
    return "<" + prefix + name + attributes + ">" + Gap() + content + "</" + prefix + name + ">" + Gap();
}

std::string RandomModelPart::Vertex()
{
    return Tag("vertex", Attribute("x", Number()) + Attribute("y", Number()) + Attribute("z", Number()));
}

std::string RandomModelPart::Triangle()
{
    std::string attributes = Attribute("v1", Index()) + Attribute("v2", Index()) + Attribute("v3", Index());
    if (Chance(10))
        attributes += OneOf({" pid=\"1\"", " pid=\"1\" p1=\"0\"", " pid=\"2\" p1=\"0\" p2=\"1\" p3=\"2\""});
    if (IsOdd(10))
        attributes +=
            OneOf({" p1=\"0\" pid=\"1\"", " pid=\"1\" pid=\"1\"", " p3=\"x\"", " p2=\"-1\"", " pid='1'",
                   " paint=\"8\"", " p1=\"1\"p2=\"1\"", " p3=\"1\" p1=\"2\"", " v4=\"1\""});
    return Tag("triangle", attributes);
}

// Vertices and triangles, as a rule enough of them in a row that they are set aside.
std::string RandomModelPart::Rows()
{
    std::string rows;
    for (int left = 1 + Below(3); left > 0; --left) {
        const bool areVertices = Chance(50);
        const std::string gap = Gap();
        for (int count = Below(Chance(80) ? 30 : 5); count >= 0; --count)
            rows += (areVertices ? Vertex() : Triangle()) + (IsOdd(10) ? Gap() : gap);
    }
    return rows;
}

std::string RandomModelPart::Mesh()
{
    if (IsOdd(100))
        return Element("mesh", "", Rows() + Rows());
    std::string vertices, triangles;
    for (int count = 3 + Below(30); count > 0; --count)
        vertices += Vertex() + Gap();
    for (int count = Below(30); count > 0; --count)
        triangles += Triangle() + Gap();
    return Element("mesh", "", Element("vertices", "", vertices) + Element("triangles", "", triangles));
}

std::string RandomModelPart::Components()
{
    std::string components;
    for (int count = Below(4); count > 0; --count)
        components += Tag("component", Attribute("objectid", Id()) +
                                           (Chance(60) ? Attribute("transform", Transform()) : "")) +
                      Gap();
    if (IsOdd(50))
        components += Rows();
    return Element("components", "", components);
}

std::string RandomModelPart::Object()
{
    const std::string attributes =
        Attribute("id", Id()) +
        (Chance(70) ? Attribute("name", OneOf({"", "part", "a&amp;b", "\xC3\xA4", "&#x1F600;"})) : "") +
        (Chance(20) ? Attribute("pid", "1") : "");
    if (IsOdd(50))
        return Element("object", attributes, OneOf({"", "text", "<metadatagroup/>"}));
    std::string content = Chance(70) ? Mesh() : Components();
    if (IsOdd(30))
        content = (Chance(50) ? Rows() : Metadata()) + content;
    if (IsOdd(30))
        content += Chance(50) ? Mesh() : Components();
    return Element("object", attributes, content);
}

std::string RandomModelPart::Build()
{
    std::string items;
    for (int count = Below(6); count > 0; --count)
        items += Tag("item",
                     Attribute("objectid", Id()) + (Chance(70) ? Attribute("transform", Transform()) : "")) +
                 Gap();
    if (IsOdd(50))
        items += Chance(50) ? Rows() : Object();
    return Element("build", "", items);
}

std::string RandomModelPart::Metadata()
{
    const std::string content =
        OneOf({"", "text", "a &amp; b", "a<!-- -->b", " ", "\r\n", "<b/>text", "&#65;b", "a\tb"}) +
        (IsOdd(100) ? "<![CDATA[c <d>]]>" : "");
    return Element("metadata", Attribute("name", OneOf({"Title", "Designer", "", "a:b"})), content);
}

std::string RandomModelPart::Materials()
{
    std::string bases;
    for (int count = Below(4); count > 0; --count)
        bases += Tag("base",
                     Attribute("name", "n") + Attribute("displaycolor", OneOf({"#FF0000", "#00FF0080", ""})));
    return Element("basematerials", Attribute("id", Id()), bases);
}

std::string RandomModelPart::Textures()
{
    std::string coordinates;
    for (int count = Below(5); count > 0; --count)
        coordinates += Tag("tex2coord", (Chance(80) ? Attribute("u", Number()) : "") +
                                            (Chance(80) ? Attribute("v", Number()) : "")) +
                       Gap();
    return Element("texture2dgroup", (Chance(80) ? Attribute("id", Id()) : "") + Attribute("texid", Id()),
                   coordinates);
}

std::string RandomModelPart::Model()
{
    const std::string attributes =
        (Chance(80) ? Attribute("unit", OneOf({"millimeter", "inch", "", "Millimeter"})) : "") +
        (Chance(90) ? " xmlns=\"urn:core\"" : "") + " xmlns:p=\"urn:p\"" +
        (Chance(50) ? " xmlns:q=\"urn:p\"" : "");
    std::string content = Chance(50) ? Metadata() + Gap() : "";
    std::string resources = Chance(30) ? Materials() : "";
    if (Chance(15))
        resources += Textures();
    for (int count = 1 + Below(4); count > 0; --count)
        resources += Object();
    content += Element("resources", "", resources);
    if (IsOdd(100))
        content += Build() + Object();
    if (Chance(80))
        content += Build();
    if (IsOdd(30))
        content += Rows();
    return IsOdd(15) ? Rows() : Element("model", attributes, content);
}

QByteArray RandomModelPart::Encoded(const std::string& text)
{
    const QByteArray bytes = QByteArray::fromStdString(text);
    if (!IsOdd(40))
        return bytes;
    const std::string name = OneOf({"UTF-16", "UTF-16LE", "UTF-16BE", "UTF-32", "ISO-8859-1"});
    return QTextCodec::codecForName(QByteArray::fromStdString(name))->fromUnicode(QString::fromUtf8(bytes));
}

void RandomModelPart::Mutate(QByteArray& document)
{
    if (document.isEmpty())
        return;
    if (Chance(30))
        document.truncate(Below(document.size()));
    for (int count = Below(4); count > 0 && !document.isEmpty(); --count) {
        const int place = Below(document.size());
        const std::string characters = "<>/\"'& =-!?[]\r\n\tv0.x";
        switch (Below(4)) {
        case 0:
            document[place] =
                characters[static_cast<std::size_t>(Below(static_cast<int>(characters.size())))];
            break;
        case 1:
            document[place] = static_cast<char>(Below(256));
            break;
        case 2:
            document.remove(place, 1 + Below(Chance(50) ? 3 : 200));
            break;
        default:
            document.insert(place, document.mid(Below(document.size()), Below(200)));
            break;
        }
    }
}

} // namespace test
