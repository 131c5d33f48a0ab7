#include "tests/reliability/SlowInputs.h"

#include <cmath>
#include <cstring>
#include <functional>
#include <initializer_list>

#include <QTextCodec>
#include <QtEndian>

#include "tests/3mf/ZipBuilder.h"
#include "tests/reliability/Formats.h"
#include "tests/stl/STLBuilders.h"

namespace test {

namespace {

/// Pieces, numbered from 0, until there are so many bytes.
QByteArray Repeated(int size, const std::function<QByteArray(int)>& piece)
{
    QByteArray bytes;
    for (int i = 0; bytes.size() < size; ++i)
        bytes += piece(i);
    return bytes;
}

QByteArray Repeated(int size, const char* piece)
{
    return QByteArray(piece).repeated(size / int(std::strlen(piece)));
}

QByteArray Number(int value)
{
    return QByteArray::number(value);
}

// ---- STL

using Corner = Vector3D<float>;
constexpr int kRecordSize = 50;

QByteArray FacetsOf(int size, const std::function<void(BinarySTL&, int)>& add)
{
    BinarySTL file;
    for (int i = 0; i < size / kRecordSize; ++i)
        add(file, i);
    return file;
}

QByteArray StlOfEqualFacets(int size)
{
    return FacetsOf(size, [](BinarySTL& file, int) { file.Facet({0, 0, 0}, {1, 0, 0}, {0, 1, 0}); });
}

/// All facets have one edge in common.
QByteArray StlOfEqualEdges(int size)
{
    return FacetsOf(size, [](BinarySTL& file, int i) { file.Facet({0, 0, 0}, {1, 0, 0}, {0, 1, float(i)}); });
}

QByteArray StlOfOneFan(int size)
{
    return FacetsOf(size, [](BinarySTL& file, int i) {
        const auto at = [](int k) { return Corner(float(k), float(k % 7), 5); };
        file.Facet({0, 0, 0}, at(i), at(i + 1));
    });
}

/// A fan whose rim is jittered: it is joined within a tolerance, link by link.
QByteArray StlOfOneJitteredFan(int size)
{
    const int count = size / kRecordSize;
    return FacetsOf(size, [count](BinarySTL& file, int i) {
        const auto at = [count](int k) {
            const double turn = 6.283185307179586 * k / count;
            return Corner(float(1e6 * std::cos(turn)), float(1e6 * std::sin(turn)), 0);
        };
        const float jitter = 1e-5f * float(i % 3);
        file.Facet({jitter, 0, 0}, at(i), at(i + 1));
    });
}

/// Open edges everywhere, many to each cell of the tolerance.
QByteArray StlOfCrowdedEdges(int size)
{
    return FacetsOf(size, [](BinarySTL& file, int i) {
        const float x = 1e-6f * float(i % 13);
        const float y = 1e-6f * float(i % 17);
        file.Facet({x, y, 0}, {1 + y, x, 0}, {x, 1 + y, 1e-7f * float(i)});
    });
}

QByteArray StlOfNoNumbers(int size)
{
    return FacetsOf(size, [](BinarySTL& file, int i) {
        file.Facet({float(NAN), 0, 0}, {1, INFINITY, 0}, {0, 1, float(i)});
    });
}

QByteArray StlOfSpikes(int size)
{
    return FacetsOf(size, [](BinarySTL& file, int i) {
        file.Facet({0, 0, 0}, {3e38f, float(i), 0}, {-3e38f, 0, 1e-40f * float(i)});
    });
}

QByteArray StlOfOneToken(int size)
{
    return "solid\n" + QByteArray(size, 'a');
}

QByteArray StlOfSolidsThatEnd(int size)
{
    return "solid\n" + Repeated(size, "endsolid solid ");
}

QByteArray StlOfLongNumbers(int size)
{
    return "solid\nnormal 0 0 1\nvertex " + QByteArray(size / 2, '1') + " 0 0\nvertex 0." +
           QByteArray(size / 2, '3') + " 1 0\nvertex 1 1 0\n";
}

QByteArray StlOfOpenSolids(int size)
{
    return Repeated(size, "soli");
}

// ---- OBJ and MTL

QByteArray ObjOfOnePolygon(int size)
{
    return "v 0 0 0\nv 1 0 0\nv 0 1 0\nf" + Repeated(size, " 1 2 3") + "\n";
}

QByteArray ObjOfOneLine(int size)
{
    return QByteArray(size, 'v');
}

QByteArray ObjOfJoinedLines(int size)
{
    return Repeated(size, "v \\\n");
}

QByteArray ObjOfEqualNames(int size)
{
    return Repeated(size, "usemtl a\n");
}

QByteArray ObjOfManyNames(int size)
{
    return Repeated(size, [](int i) { return "usemtl m" + Number(i) + '\n'; });
}

QByteArray ObjOfManyLibraries(int size)
{
    return Repeated(size, [](int i) { return "mtllib l" + Number(i) + ".mtl\n"; });
}

/// A library of as many materials as groups that look for the last of them: the file names itself.
QByteArray ObjThatIsItsLibrary(int size)
{
    return "mtllib model.obj\n" + Repeated(size / 2, [](int i) { return "newmtl m" + Number(i) + '\n'; }) +
           Repeated(size / 2, [](int i) { return "usemtl m" + Number(i) + '\n'; });
}

QByteArray ObjOfDeepIndices(int size)
{
    return "v 0 0 0\n" + Repeated(size, "f 1/1/1 -2147483648//2147483647 99999999999999999999/2/3\n");
}

QByteArray MtlOfEqualNames(int size)
{
    return Repeated(size, "newmtl a\n");
}

QByteArray MtlOfMissingPictures(int size)
{
    return Repeated(size, [](int i) { return "newmtl m\nmap_Kd p" + Number(i) + ".png\n"; });
}

QByteArray MtlOfOnePicture(int size)
{
    return Repeated(size, "newmtl m\nmap_Kd p.png\nbump p.png\n");
}

QByteArray MtlOfNumbersForNames(int size)
{
    return Repeated(size, "newmtl m\nmap_Kd -o 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 p.png\n");
}

QByteArray MtlOfOneStatement(int size)
{
    return "newmtl m\nmap_Kd" + Repeated(size, " -o 1") + " p.png\n";
}

// ---- 3MF

ZipBuilder Types()
{
    return ZipBuilder().Add("[Content_Types].xml",
                            "<Types><Default Extension='model' "
                            "ContentType='application/vnd.ms-package.3dmanufacturing-3dmodel+xml'/></Types>");
}

QByteArray Package(const QByteArray& model)
{
    return Types().Add("3D/3dmodel.model", model).Bytes();
}

/// A package whose model part has so many bytes; deflated it has far fewer.
QByteArray PackageOf(const QByteArray& resources, const QByteArray& build = QByteArray())
{
    return Package("<model><resources>" + resources + "</resources><build>" + build + "</build></model>");
}

QByteArray PackageOfManyObjects(int size)
{
    return PackageOf(Repeated(size, [](int i) { return "<object id='" + Number(i) + "'/>"; }));
}

/// Every item places every object.
QByteArray PackageOfEqualIds(int size)
{
    return PackageOf(Repeated(size / 2, "<object id='1'/>"),
                     Repeated(size / 2, "<item objectid='1' transform='2 0 0 0 1 0 0 0 1 0 0 0'/>"));
}

QByteArray PackageOfComponents(int size)
{
    return PackageOf(Repeated(size / 4, "<object id='1'/>") +
                     Repeated(size * 3 / 4, "<object id='2'><components><component objectid='1' "
                                            "transform='2 0 0 0 1 0 0 0 1 0 0 0'/></components></object>"));
}

QByteArray PackageOfDeepElements(int size)
{
    return Package(Repeated(size / 2, "<a>") + Repeated(size / 2, "</a>"));
}

QByteArray PackageOfNamespaces(int size)
{
    return Package(Repeated(size, [](int i) { return "<a xmlns:p" + Number(i) + "='u'>"; }));
}

QByteArray Attributes(int size)
{
    return Repeated(size, [](int i) { return " a" + Number(i) + "=''"; });
}

QByteArray PackageOfAttributes(int size)
{
    return Package("<model" + Attributes(size) + "></model>");
}

QByteArray InUtf16(const QByteArray& text)
{
    return QTextCodec::codecForName("UTF-16")->fromUnicode(QString::fromLatin1(text));
}

QByteArray PackageOfAttributesInUtf16(int size)
{
    return Package(InUtf16("<model" + Attributes(size / 2) + "></model>"));
}

/// In an encoding where no character of a tag is what it is in ASCII.
QByteArray PackageOfAttributesInEbcdic(int size)
{
    return Package("<?xml version='1.0' encoding='IBM037'?>" +
                   QTextCodec::codecForName("IBM037")->fromUnicode(
                       QString::fromLatin1("<model" + Attributes(size) + "></model>")));
}

/// The reader decodes a document again for each encoding that it declares.
QByteArray PackageOfEncodings(int size)
{
    return Package("<?xml version='1.0'" + Repeated(size / 2, " encoding='UTF-7' encoding='IBM037'") +
                   "?><model>" + QByteArray(size / 2, ' ') + "</model>");
}

// As much as the library lets pass before Qt's reader begins.
constexpr int kLongestDocumentType = 220'000;
constexpr int kMostReferences = 60'000;

/// Tags that are just not too long.
QByteArray PackageOfLongTags(int size)
{
    QByteArray tag = "<a";
    for (int i = 0; i < 20'000; ++i)
        tag += " a" + Number(i) + "=''";
    return Package("<model>" + QByteArray(tag + "/>").repeated(qMax(size / tag.size(), 1)) + "</model>");
}

QByteArray PackageOfDefaultAttributes(int size)
{
    return Package("<!DOCTYPE model [" +
                   Repeated(qMin(size * 3 / 4, kLongestDocumentType),
                            [](int i) { return "<!ATTLIST a b" + Number(i) + " CDATA '1'>"; }) +
                   "]><model>" + Repeated(size / 4, "<a/>") + "</model>");
}

QByteArray PackageOfDeclaredAttributes(int size)
{
    return Package("<!DOCTYPE model [<!ATTLIST a" +
                   Repeated(qMin(size, kLongestDocumentType),
                            [](int i) { return " b" + Number(i) + " CDATA #IMPLIED"; }) +
                   ">]><model/>");
}

QByteArray PackageOfAttributesInAnEntity(int size)
{
    return Package("<!DOCTYPE model [<!ENTITY e \"&#60;a" + Attributes(qMin(size, kLongestDocumentType)) +
                   "/>\">]><model>&e;</model>");
}

QByteArray PackageOfEntitiesInAnAttribute(int size)
{
    return Package("<!DOCTYPE model [<!ENTITY e '" + QByteArray(4000, 'e') + "'>]><model unit='" +
                   Repeated(qMin(size, 3 * kMostReferences), "&e;") + "'/>");
}

QByteArray PackageOfEntities(int size)
{
    return Package("<!DOCTYPE model [<!ENTITY e '" + QByteArray(4000, 'e') +
                   "'>]><model><metadata name='n'>" + Repeated(qMin(size, 3 * kMostReferences), "&e;") +
                   "</metadata></model>");
}

/// Qt expands no entity of more than 4096 characters.
QByteArray PackageOfAttributesInEntities(int size)
{
    return Package("<!DOCTYPE model [<!ENTITY e \"<a" + Attributes(qMin(size / 20, 4000)) + "/>\">]><model>" +
                   Repeated(qMin(size, 3 * kMostReferences), "&e;") + "</model>");
}

QByteArray PackageOfElementsInEntities(int size)
{
    return Package("<!DOCTYPE model [<!ENTITY e '" + Repeated(4000, "<a/>") + "'>]><model>" +
                   Repeated(qMin(size, 3 * kMostReferences), "&e;") + "</model>");
}

QByteArray PackageOfParameterEntities(int size)
{
    return Package("<!DOCTYPE model [<!ENTITY % e \"" + Repeated(4000, "<!ATTLIST a b CDATA '1'>") + "\">" +
                   Repeated(size, "%e;") + "]><model/>");
}

/// A package of so many bytes of which no part is slow on its own.
QByteArray PackageOfBusyParts(int size)
{
    const QByteArray defaults =
        Repeated(25'000, [](int i) { return "<!ATTLIST a b" + Number(i) + " CDATA '1'>"; });
    const QByteArray part =
        "<!DOCTYPE model [" + defaults + "]><model>" + Repeated(1000, "<a/>") + "</model>";
    ZipBuilder package = Types();
    for (int i = 0; i < size / 4000; ++i)
        package.Add("3D/" + Number(i) + ".model", part);
    return package.Bytes();
}

QByteArray PackageOfMetadata(int size)
{
    return Package("<model>" +
                   Repeated(size, [](int i) { return "<metadata name='" + Number(i) + "'>x</metadata>"; }) +
                   "</model>");
}

QByteArray PackageOfShortRows(int size)
{
    return PackageOf("<object id='1'><mesh><vertices>" +
                     Repeated(size, "<vertex x='0' y='1' z='2'/><!-- -->") + "</vertices></mesh></object>");
}

/// As many entries as there is room for, all of them model parts.
QByteArray PackageOfManyParts(int size)
{
    ZipBuilder zip = Types();
    for (int i = 0; i < size / 200; ++i)
        zip.Add(Number(i) + ".model", "<model><resources><object id='1'/></resources></model>");
    return zip.Bytes();
}

/// A bomb: blanks, a thousand times as many as bytes.
QByteArray PackageOfBlanks(int size)
{
    return Package("<model>" + QByteArray(int(qMin(size * 1000LL, 1000LL << 20)), ' ') + "</model>");
}

// ---- texture and path files

QByteArray TextureOfEqualKeys(int size)
{
    return "{" + Repeated(size, "\"image_data\": \"\", ") + "\"version\": 1}";
}

QByteArray TextureOfManyKeys(int size)
{
    return "{" + Repeated(size, [](int i) { return "\"k" + Number(i) + "\": 1, "; }) + "\"version\": 1}";
}

QByteArray TextureOfNesting(int size)
{
    return Repeated(size / 2, "{\"a\":") + "1" + QByteArray(size / 2, '}');
}

QByteArray TextureOfEscapes(int size)
{
    return "{\"image_data\": \"" + Repeated(size, "\\u0041\\/") + "\"}";
}

QByteArray TextureOfNoBase64(int size)
{
    return "{\"image_data\": \"" + QByteArray(size, '*') + "\"}";
}

QByteArray Integers(std::initializer_list<qint32> values)
{
    QByteArray bytes;
    for (const qint32 value : values) {
        char stored[sizeof value];
        qToLittleEndian(value, stored);
        bytes.append(stored, sizeof stored);
    }
    return bytes;
}

QByteArray PathsOfEqualIds(int size)
{
    return Integers({size / 12}) + Integers({1, 0, 0}).repeated(size / 12);
}

QByteArray PathsOfManyIds(int size)
{
    const int count = size / 12;
    return Integers({count}) + Repeated(size, [count](int i) { return Integers({count - i, 0, 0}); });
}

QByteArray PathsOfEmptyContours(int size)
{
    return Integers({1, 1, 0, size / 4}) + QByteArray(size, '\0');
}

QByteArray PathsOfOneName(int size)
{
    return Integers({1, 1, size}) + QByteArray(size, 'Q') + Integers({0});
}

} // namespace

const std::vector<SlowInput>& SlowInputs()
{
    const auto stl = ReaderNamed("BinaryStl").read;
    const auto obj = ReaderNamed("Obj").read;
    const auto mtl = ReaderNamed("Mtl").read;
    const auto package = ReaderNamed("ThreeMf").read;
    const auto texture = ReaderNamed("Texture").read;
    const auto path = ReaderNamed("Path").read;
    static const std::vector<SlowInput> kInputs = {
        {"StlOfEqualFacets", "model.stl", StlOfEqualFacets, stl, true},
        {"StlOfEqualEdges", "model.stl", StlOfEqualEdges, stl, true},
        {"StlOfOneFan", "model.stl", StlOfOneFan, stl, true},
        {"StlOfOneJitteredFan", "model.stl", StlOfOneJitteredFan, stl, true},
        {"StlOfCrowdedEdges", "model.stl", StlOfCrowdedEdges, stl, true},
        {"StlOfNoNumbers", "model.stl", StlOfNoNumbers, stl, true},
        {"StlOfSpikes", "model.stl", StlOfSpikes, stl, true},
        {"StlOfOneToken", "model.stl", StlOfOneToken, stl, false},
        {"StlOfSolidsThatEnd", "model.stl", StlOfSolidsThatEnd, stl, false},
        {"StlOfLongNumbers", "model.stl", StlOfLongNumbers, stl, true},
        {"StlOfOpenSolids", "model.stl", StlOfOpenSolids, stl, false},
        {"ObjOfOnePolygon", "model.obj", ObjOfOnePolygon, obj, true},
        {"ObjOfOneLine", "model.obj", ObjOfOneLine, obj, true},
        {"ObjOfJoinedLines", "model.obj", ObjOfJoinedLines, obj, true},
        {"ObjOfEqualNames", "model.obj", ObjOfEqualNames, obj, true},
        {"ObjOfManyNames", "model.obj", ObjOfManyNames, obj, true},
        {"ObjOfManyLibraries", "model.obj", ObjOfManyLibraries, obj, true},
        {"ObjThatIsItsLibrary", "model.obj", ObjThatIsItsLibrary, obj, true},
        {"ObjOfDeepIndices", "model.obj", ObjOfDeepIndices, obj, true},
        {"MtlOfEqualNames", "library.mtl", MtlOfEqualNames, mtl, true},
        {"MtlOfMissingPictures", "library.mtl", MtlOfMissingPictures, mtl, true},
        {"MtlOfOnePicture", "library.mtl", MtlOfOnePicture, mtl, true},
        {"MtlOfNumbersForNames", "library.mtl", MtlOfNumbersForNames, mtl, true},
        {"MtlOfOneStatement", "library.mtl", MtlOfOneStatement, mtl, true},
        {"PackageOfManyObjects", "model.3mf", PackageOfManyObjects, package, true},
        {"PackageOfEqualIds", "model.3mf", PackageOfEqualIds, package, true},
        {"PackageOfComponents", "model.3mf", PackageOfComponents, package, true},
        {"PackageOfDeepElements", "model.3mf", PackageOfDeepElements, package, false},
        {"PackageOfNamespaces", "model.3mf", PackageOfNamespaces, package, false},
        {"PackageOfAttributes", "model.3mf", PackageOfAttributes, package, true},
        {"PackageOfLongTags", "model.3mf", PackageOfLongTags, package, true},
        {"PackageOfAttributesInUtf16", "model.3mf", PackageOfAttributesInUtf16, package, true},
        {"PackageOfAttributesInEbcdic", "model.3mf", PackageOfAttributesInEbcdic, package, true},
        {"PackageOfEncodings", "model.3mf", PackageOfEncodings, package, false},
        {"PackageOfDeclaredAttributes", "model.3mf", PackageOfDeclaredAttributes, package, true},
        {"PackageOfAttributesInAnEntity", "model.3mf", PackageOfAttributesInAnEntity, package, false},
        {"PackageOfEntitiesInAnAttribute", "model.3mf", PackageOfEntitiesInAnAttribute, package, true},
        {"PackageOfDefaultAttributes", "model.3mf", PackageOfDefaultAttributes, package, true},
        {"PackageOfEntities", "model.3mf", PackageOfEntities, package, true},
        {"PackageOfAttributesInEntities", "model.3mf", PackageOfAttributesInEntities, package, true},
        {"PackageOfElementsInEntities", "model.3mf", PackageOfElementsInEntities, package, false},
        {"PackageOfParameterEntities", "model.3mf", PackageOfParameterEntities, package, false},
        {"PackageOfBusyParts", "model.3mf", PackageOfBusyParts, package, true},
        {"PackageOfMetadata", "model.3mf", PackageOfMetadata, package, true},
        {"PackageOfShortRows", "model.3mf", PackageOfShortRows, package, true},
        {"PackageOfManyParts", "model.3mf", PackageOfManyParts, package, true},
        {"PackageOfBlanks", "model.3mf", PackageOfBlanks, package, true},
        {"TextureOfEqualKeys", "wood.texture", TextureOfEqualKeys, texture, false},
        {"TextureOfManyKeys", "wood.texture", TextureOfManyKeys, texture, false},
        {"TextureOfNesting", "wood.texture", TextureOfNesting, texture, false},
        {"TextureOfEscapes", "wood.texture", TextureOfEscapes, texture, false},
        {"TextureOfNoBase64", "wood.texture", TextureOfNoBase64, texture, false},
        {"PathsOfEqualIds", "cut.path", PathsOfEqualIds, path, true},
        {"PathsOfManyIds", "cut.path", PathsOfManyIds, path, true},
        {"PathsOfEmptyContours", "cut.path", PathsOfEmptyContours, path, true},
        {"PathsOfOneName", "cut.path", PathsOfOneName, path, true},
    };
    return kInputs;
}

} // namespace test
