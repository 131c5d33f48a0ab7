#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "fileformat/3mf/Model3MF.h"
#include "tests/3mf/ZipBuilder.h"
#include "tests/common/Bytes.h"
#include "tests/common/PictureFiles.h"
#include "tests/krmodel/PackageBuilder.h"
#include "tests/reliability/MalformedRows.h"

namespace {

using namespace test;

constexpr std::size_t kRowCount = 129;

constexpr char kTriangle[] = "<mesh><vertices><vertex x='0' y='0' z='0'/><vertex x='1' y='0' z='0'/>"
                             "<vertex x='0' y='1' z='0'/></vertices>"
                             "<triangles><triangle v1='0' v2='1' v3='2'/></triangles></mesh>";
constexpr char kNothing[] = "millimeter";
constexpr char kOne[] = "millimeter [1 it: 0 0 0, 1 0 0, 0 1 0 | 0 1 2]";
constexpr char kRefusedAtOnce[] = "refused: millimeter";
constexpr char kRefusedBehindOne[] = "refused: millimeter [1 it: 0 0 0, 1 0 0, 0 1 0 | 0 1 2]";

std::string TextOf(const QString& text)
{
    return text.toStdString();
}

std::string TextOfObject(const Mesh& mesh)
{
    std::string text = " [" + std::to_string(mesh.GetObjectID()) + ' ' + TextOf(mesh.GetObjectName()) + ": " +
                       test::TextOf(mesh);
    const QString transform = Model3MF::ConvertFromMatTo3MFMatStr(mesh.GetTransformMatrix());
    if (transform != QLatin1String("1 0 0 0 1 0 0 0 1 0 0 0"))
        text += " at " + TextOf(transform);
    if (mesh.GetComponentsId() != -1)
        text += " of " + std::to_string(mesh.GetComponentsId());
    return text + ']';
}

/// The unit, the objects, and what else there is. A package that is refused keeps what was read before.
std::string Read(const QString& path)
{
    const ReadPackage read(path);
    std::string text = (read.isRead ? "" : "refused: ") + TextOf(read.package.GetUnit());
    for (const auto& mesh : read.meshes)
        text += TextOfObject(*mesh);
    const QMap<QString, QString> description = read.package.GetDescription();
    for (auto entry = description.begin(); entry != description.end(); ++entry)
        text += ' ' + TextOf(entry.key()) + '=' + TextOf(entry.value());
    const Model3MF::BaseMaterial material = read.package.GetMaterial();
    if (material.id != -1 || !material.colors.empty())
        text += " colours " + std::to_string(material.id);
    for (const QString& color : material.colors)
        text += ' ' + TextOf(color);
    QString imageName;
    const QByteArray image = read.package.GetImage(imageName);
    return image.isEmpty() ? text : text + ' ' + TextOf(imageName) + ' ' + image.toStdString();
}

QByteArray Model(const QByteArray& content = kTriangle)
{
    return ModelText("millimeter", ObjectText(1, "it", content));
}

QByteArray Types()
{
    return ContentTypesText(QByteArray("<Default Extension='model' ContentType='") + kModelType + "'/>");
}

QByteArray Good()
{
    return Package(Model()).Bytes();
}

/// A package whose model part is this.
QByteArray Part(const QByteArray& model)
{
    return Package(model).Bytes();
}

QByteArray PartWith(const QByteArray& before, const QByteArray& after)
{
    return Part(Changed(Model(), before, after));
}

QByteArray WithTypes(const QByteArray& types)
{
    return ZipBuilder().Add("[Content_Types].xml", types).Add("3D/3dmodel.model", Model()).Bytes();
}

ZipEntry ModelEntry()
{
    ZipEntry entry;
    entry.name = "3D/3dmodel.model";
    entry.content = Model();
    return entry;
}

QByteArray WithEntry(const ZipEntry& entry)
{
    return ZipBuilder().Add("[Content_Types].xml", Types()).Add(entry).Bytes();
}

QByteArray Named(const QByteArray& name)
{
    ZipEntry entry = ModelEntry();
    entry.name = name;
    return WithEntry(entry);
}

MalformedRows Archives()
{
    const QByteArray good = Good();
    // signature, disk, disk of the directory, entries here, entries, size and place of the directory, comment
    const int end = good.size() - 22;
    const int directory = good.indexOf("PK\1\2");
    return {
        {"an empty file", "", kNothing},
        {"a model part without an archive", Model(), kNothing},
        {"the archive's first letters alone", "PK\3\4", kNothing},
        {"a file of zeros", QByteArray(500, '\0'), kNothing},
        {"no end of the directory", good.left(end), kNothing},
        {"a wrong mark of the directory's end", Overwritten(good, end, "PK\5\7"), kNothing},
        {"half an end of the directory", good.left(end + 11), kNothing},
        {"an archive without entries", good.mid(end).replace(8, 12, QByteArray(12, '\0')), kNothing},
        {"an archive of several disks", Overwritten(good, end + 6, Bytes("\1\0")), kNothing},
        {"entries on other disks", Overwritten(good, end + 8, Bytes("\1\0")), kNothing},
        {"a directory that counts less than there is", Overwritten(good, end + 8, Bytes("\1\0\1\0")),
         kNothing},
        {"a directory larger than the file", Overwritten(good, end + 12, Bytes("\xff\xff\xff\x7f")),
         kNothing},
        {"a directory behind the file", Overwritten(good, end + 16, Bytes("\xff\xff\xff\x7f")), kNothing},
        {"a wrong mark in the directory", Overwritten(good, directory, "PK\1\3"), kNothing},
        {"bytes in front of the archive", "#!/bin/sh\nexit\n" + good, kOne},
        {"bytes behind the archive", good + QByteArray(100, 's'), kOne},
        {"an archive without its first byte", good.mid(1), kNothing},
        {"an archive whose first half is zeros", Overwritten(good, 0, QByteArray(directory, '\0')), kNothing},
        {"an archive twice", good + good, kOne},
    };
}

MalformedRows Entries()
{
    const auto changed = [](void (*change)(ZipEntry & entry)) {
        ZipEntry entry = ModelEntry();
        change(entry);
        return WithEntry(entry);
    };
    ZipEntry types;
    types.name = "[Content_Types].xml";
    types.content = Types();
    types.signature = 0;
    const QByteArray good = Good();
    const int data = good.indexOf("3D/3dmodel.model") + 16;
    return {
        {"a wrong mark in front of the model", changed([](ZipEntry& entry) { entry.signature = 0x04034B51; }),
         kNothing},
        {"a wrong mark in front of the content types", ZipBuilder().Add(types).Add(ModelEntry()).Bytes(),
         kOne},
        {"a wrong check sum", changed([](ZipEntry& entry) { entry.checkSum = 0; }), kOne},
        {"a compression that nobody knows", changed([](ZipEntry& entry) { entry.method = 99; }), kNothing},
        {"a compression that no package has", changed([](ZipEntry& entry) { entry.method = 12; }), kNothing},
        {"a size in the archive of 0", changed([](ZipEntry& entry) { entry.compressedSize = 0; }),
         kRefusedAtOnce},
        {"a size in the archive of 20 bytes", changed([](ZipEntry& entry) { entry.compressedSize = 20; }),
         kRefusedAtOnce},
        {"a size of 0", changed([](ZipEntry& entry) { entry.inflatedSize = 0; }), kRefusedAtOnce},
        {"a size too small by a byte", changed([](ZipEntry& entry) {
             entry.inflatedSize = static_cast<quint32>(entry.content.size() - 1);
         }),
         kRefusedBehindOne},
        {"a size too large", changed([](ZipEntry& entry) { entry.inflatedSize = 0x7fffffff; }), kOne},
        {"bytes that do not inflate", Overwritten(good, data, QByteArray(12, '\xff')), kRefusedAtOnce},
        {"bytes that were never deflated", changed([](ZipEntry& entry) {
             entry.content = Deflate(entry.content);
             entry.method = 0;
         }),
         kRefusedAtOnce},
        {"two models of one name", Package(Model()).Add("3D/3dmodel.model", Model("")).Bytes(),
         std::string(kOne) + " [1 it: 0 0 0, 1 0 0, 0 1 0 | 0 1 2]"},
        {"a second model that is no XML", Package(Model()).Add("3D/b.model", "b").Bytes(), kRefusedBehindOne},
        {"a name with backslashes", Named("3D\\3dmodel.model"), kOne},
        {"a name that leads out of the package", Named("../../3dmodel.model"), kOne},
        {"a name that begins with a slash", Named("/3D/3dmodel.model"), kNothing},
        {"a name that is empty", Named(""), kNothing},
        {"a name in capitals", Named("3D/3DMODEL.MODEL"), kNothing},
        {"a name that ends in a blank", Named("3D/3dmodel.model "), kNothing},
        {"a name of 5,000 letters", Named(QByteArray(5000, 'n') + ".model"), kOne},
        {"a picture that is none", Package(Model()).Add("Metadata/a.png", "no picture").Bytes(),
         std::string(kOne) + " Metadata/a.png no picture"},
        {"a picture in another directory", Package(Model()).Add("metadata/a.png", "picture").Bytes(), kOne},
    };
}

MalformedRows ContentTypes()
{
    const QByteArray type = kModelType;
    const QByteArray picture = "\x89PNG";
    return {
        {"no content types", ZipBuilder().Add(ModelEntry()).Bytes(), kOne},
        {"no content types, and a picture",
         ZipBuilder().Add(ModelEntry()).Add("Metadata/a.png", picture).Bytes(), kRefusedBehindOne},
        {"empty content types", WithTypes(""), kRefusedAtOnce},
        {"content types cut short", WithTypes(Types().left(60)), kRefusedAtOnce},
        {"content types of two roots", WithTypes(Types() + Types()), kRefusedAtOnce},
        {"content types in JSON", WithTypes("{\"model\": true}"), kRefusedAtOnce},
        {"content types of two bytes a character", WithTypes("\xff\xfe" + Utf16(Types())), kOne},
        {"content types that do not name the model", WithTypes(ContentTypesText("")), kOne},
        {"content types that name another extension",
         WithTypes(ContentTypesText("<Default Extension='xml' ContentType='" + type + "'/>")), kNothing},
        {"an extension in capitals", WithTypes(Changed(Types(), "'model'", "'MODEL'")), kNothing},
        {"an extension with its dot", WithTypes(Changed(Types(), "'model'", "'.model'")), kOne},
        {"an extension with a blank", WithTypes(Changed(Types(), "'model'", "' model'")), kNothing},
        {"a type in capitals", WithTypes(Changed(Types(), type, type.toUpper())), kOne},
        {"the model's part alone named, and a picture",
         ZipBuilder()
             .Add("[Content_Types].xml",
                  ContentTypesText("<Override PartName='/3D/3dmodel.model' ContentType='" + type + "'/>"))
             .Add(ModelEntry())
             .Add("Metadata/a.png", picture)
             .Bytes(),
         kRefusedBehindOne},
        {"two extensions for the model",
         WithTypes(
             Changed(Types(), "</Types>", "<Default Extension='other' ContentType='" + type + "'/></Types>")),
         kNothing},
        {"the content types' name in small letters",
         ZipBuilder().Add("[content_types].xml", Types()).Add(ModelEntry()).Bytes(), kOne},
    };
}

MalformedRows Markup()
{
    const QByteArray declaration = "<?xml version='1.0' encoding='UTF-8'?>";
    const QByteArray laughs =
        "<!DOCTYPE model [<!ENTITY a 'ha'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;'>"
        "<!ENTITY c '&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;'><!ENTITY d '&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;'>"
        "<!ENTITY e '&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;'><!ENTITY f '&e;&e;&e;&e;&e;&e;&e;&e;&e;&e;'>"
        "]>";
    return {
        {"an empty model part", Part(""), kRefusedAtOnce},
        {"a declaration alone", Part(declaration), kRefusedAtOnce},
        {"no end of the root", Part(Changed(Model(), "</model>", "")), kRefusedBehindOne},
        {"a model cut within its object", Part(Model().left(Model().indexOf("<triangles>"))),
         "refused: millimeter [1 it: 0 0 0, 1 0 0, 0 1 0 | ]"},
        {"an end of another element", PartWith("</resources>", "</build>"), kRefusedBehindOne},
        {"two roots", Part(Model() + "<model/>"), "refused: " + std::string(kOne)},
        {"text in front of the root", Part(Changed(Model(), declaration, "model")), kRefusedAtOnce},
        {"text behind the root", Part(Model() + "model"), kRefusedBehindOne},
        {"a blank in front of the declaration", Part(' ' + Model()), kRefusedAtOnce},
        {"a version of XML that nobody knows", PartWith("'1.0'", "'2.0'"), kRefusedAtOnce},
        {"an encoding that nobody knows", PartWith("UTF-8", "KLINGON-8"), kRefusedAtOnce},
        {"a byte that is no UTF-8", PartWith("name='it'", "name='i\xfct'"), kRefusedAtOnce},
        {"a byte-order mark", Part("\xef\xbb\xbf" + Model()), kOne},
        {"two bytes a character, with their mark",
         Part("\xff\xfe" + Utf16(Changed(Model(), "UTF-8", "UTF-16"))), kOne},
        {"a prefix that is not declared",
         Part(Model().replace("<object", "<p:object").replace("</object", "</p:object")), kRefusedAtOnce},
        {"an attribute twice", PartWith("id='1'", "id='1' id='2'"), kRefusedAtOnce},
        {"an attribute without quotes", PartWith("id='1'", "id=1"), kRefusedAtOnce},
        {"an attribute without a value", PartWith("id='1'", "id"), kRefusedAtOnce},
        {"an attribute that is not closed", PartWith("name='it'", "name='it"), kRefusedAtOnce},
        {"no blank between two attributes", PartWith("id='1' ", "id='1'"), kRefusedAtOnce},
        {"the begin of an element in an attribute", PartWith("'it'", "'<it'"), kRefusedAtOnce},
        {"an ampersand by itself", PartWith("'it'", "'i & t'"), kRefusedAtOnce},
        {"an entity that is not declared", PartWith("'it'", "'&it;'"), kRefusedAtOnce},
        {"an entity that is declared",
         Part(Changed(Changed(Model(), "'it'", "'&n;'"), declaration, "<!DOCTYPE model [<!ENTITY n 'it'>]>")),
         kOne},
        {"entities that multiply", Part(Changed(Changed(Model(), "'it'", "'&f;'"), declaration, laughs)),
         kRefusedAtOnce},
        {"an entity that contains itself",
         Part(
             Changed(Changed(Model(), "'it'", "'&n;'"), declaration, "<!DOCTYPE model [<!ENTITY n '&n;'>]>")),
         kRefusedAtOnce},
        {"an entity of a file, in an attribute",
         Part(Changed(Changed(Model(), "'it'", "'&n;'"), declaration,
                      "<!DOCTYPE model [<!ENTITY n SYSTEM 'file:///etc/hostname'>]>")),
         kRefusedAtOnce},
        {"the character 0", PartWith("'it'", "'&#0;'"), kRefusedAtOnce},
        {"a character beyond Unicode", PartWith("'it'", "'&#x110000;'"), kRefusedAtOnce},
        {"a byte of 0", PartWith("'it'", Bytes("'i\0t'")), kRefusedAtOnce},
        {"a control character", PartWith("'it'", "'i\1t'"), kRefusedAtOnce},
        {"two hyphens in a remark", PartWith("<build>", "<!-- a -- b --><build>"), kRefusedBehindOne},
        {"a remark that is not closed", PartWith("<resources>", "<!-- <resources>"), kRefusedAtOnce},
        {"a section of characters that is not closed", PartWith("<resources>", "<![CDATA[<resources>"),
         kRefusedAtOnce},
        {"a second declaration", PartWith("<build>", declaration + "<build>"), kRefusedBehindOne},
    };
}

/// The triangle with one thing changed.
QByteArray Triangle(const QByteArray& before, const QByteArray& after)
{
    return Part(Model(Changed(kTriangle, before, after)));
}

std::string Object(const std::string& mesh)
{
    return "millimeter [1 it: " + mesh + ']';
}

MalformedRows Geometry()
{
    const QByteArray last = "x='0' y='1' z='0'";
    const std::string none = Object("0 0 0, 1 0 0, 0 1 0 | ");
    return {
        {"a vertex without x and z", Triangle(last, "y='1'"), kOne},
        {"a vertex without attributes", Triangle(last, ""), Object("0 0 0, 1 0 0, 0 0 0 | 0 1 2")},
        {"coordinates in capitals", Triangle(last, "X='5' Y='5' Z='5'"),
         Object("0 0 0, 1 0 0, 0 0 0 | 0 1 2")},
        {"a word for a coordinate", Triangle(last, "x='none' y='1' z='0'"), kOne},
        {"a decimal comma", Triangle(last, "x='1,5' y='1' z='0'"), kOne},
        {"text for no number", Triangle(last, "x='nan' y='1' z='0'"),
         Object("0 0 0, 1 0 0, nan 1 0 | 0 1 2")},
        {"a coordinate too large for a float", Triangle(last, "x='1e39' y='1' z='0'"),
         Object("0 0 0, 1 0 0, inf 1 0 | 0 1 2")},
        {"an index one too large", Triangle("v3='2'", "v3='3'"), none},
        {"an index of -1", Triangle("v3='2'", "v3='-1'"), none},
        {"an index beyond 32 bits that wraps to 2", Triangle("v3='2'", "v3='4294967298'"),
         Object("0 0 0, 1 0 0, 0 1 0 | 0 1 0")},
        {"a fraction for an index", Triangle("v3='2'", "v3='2.0'"), Object("0 0 0, 1 0 0, 0 1 0 | 0 1 0")},
        {"an index that is not there", Triangle(" v3='2'", ""), Object("0 0 0, 1 0 0, 0 1 0 | 0 1 0")},
        {"triangles in front of the vertices",
         Part(Model("<mesh><triangles><triangle v1='0' v2='0' v3='0'/></triangles><vertices><vertex "
                    "x='5'/></vertices></mesh>")),
         Object("5 0 0 | 0 0 0")},
        {"an element's name in capitals", Triangle("<triangle v1", "<Triangle v1"), none},
        {"an object of no mesh", Part(Model("")), Object(" | ")},
        {"an object of two meshes", Part(Model(QByteArray(kTriangle) + kTriangle)),
         Object("0 0 0, 1 0 0, 0 1 0, 0 0 0, 1 0 0, 0 1 0 | 0 1 2, 0 1 2")},
        {"a vertex outside of its list", Triangle("</vertices>", "</vertices><vertex x='7'/>"),
         Object("0 0 0, 1 0 0, 0 1 0, 7 0 0 | 0 1 2")},
    };
}

MalformedRows Structure()
{
    const QByteArray triangle = ObjectText(1, "it", kTriangle);
    const auto placed = [&](const QByteArray& transform) {
        return Part(ModelText("millimeter", triangle, ItemText(1, transform)));
    };
    const auto at = [](const std::string& transform) {
        return "millimeter [1 it: 0 0 0, 1 0 0, 0 1 0 | 0 1 2 at " + transform + ']';
    };
    const std::string it = " [1 it: 0 0 0, 1 0 0, 0 1 0 | 0 1 2]";
    return {
        {"a model without a unit", PartWith(" unit='millimeter'", ""), it},
        {"a unit that nobody knows", PartWith("'millimeter'", "'furlong'"), "furlong" + it},
        {"another root",
         Part(Model()
                  .replace("<model unit='inch'", "<scene")
                  .replace("<model unit='millimeter'", "<scene")
                  .replace("</model>", "</scene>")),
         kOne},
        {"an object without an id", PartWith("id='1' ", ""),
         "millimeter [0 it: 0 0 0, 1 0 0, 0 1 0 | 0 1 2]"},
        {"a word for an object's id", PartWith("id='1'", "id='one'"),
         "millimeter [0 it: 0 0 0, 1 0 0, 0 1 0 | 0 1 2]"},
        {"an object's id beyond 32 bits", PartWith("id='1'", "id='4294967297'"),
         "millimeter [0 it: 0 0 0, 1 0 0, 0 1 0 | 0 1 2]"},
        {"two objects of one id", Part(ModelText("millimeter", triangle + triangle)), kOne + it},
        {"an item of an object that is not there",
         Part(ModelText("millimeter", triangle, ItemText(9, "2 0 0 0 2 0 0 0 2 0 0 0"))), kOne},
        {"a component of an object that is not there",
         Part(ModelText("millimeter",
                        triangle +
                            ObjectText(2, "all", "<components><component objectid='9'/></components>"))),
         kOne},
        {"a component of its own object",
         Part(ModelText("millimeter",
                        triangle +
                            ObjectText(2, "all", "<components><component objectid='2'/></components>"))),
         kOne},
        {"no components", Part(ModelText("millimeter", triangle + ObjectText(2, "all", "<components/>"))),
         kOne},
        {"a transform of 11 numbers", placed("1 0 0 0 1 0 0 0 1 4 5"), at("1 0 0 0 1 0 0 0 1 4 5 0")},
        {"a transform of 13 numbers", placed("1 0 0 0 1 0 0 0 1 4 5 6 7"), at("1 0 0 0 1 0 0 0 1 4 5 6")},
        {"an empty transform", placed(""), kOne},
        {"a transform of words", placed("turn it round"), at("0 0 0 0 1 0 0 0 1 0 0 0")},
        {"a transform with commas", placed("1,0,0,0,1,0,0,0,1,4,5,6"), at("0 0 0 0 1 0 0 0 1 0 0 0")},
        {"a colour that is none",
         PartWith("<resources>",
                  "<resources><basematerials id='x'><base displaycolor='red?'/></basematerials>"),
         kOne + std::string(" colours 0 red?")},
        {"a note without a name", PartWith("<resources>", "<metadata>text</metadata><resources>"),
         kOne + std::string(" =text")},
        {"a note without text", PartWith("<resources>", "<metadata name='Title'/><resources>"), kOne},
    };
}

} // namespace

TEST(Malformed3MF, DamagedArchivesGiveTheirResults)
{
    ExpectResults(Archives(), "model.3mf", Read);
}

TEST(Malformed3MF, DamagedEntriesGiveTheirResults)
{
    ExpectResults(Entries(), "model.3mf", Read);
}

TEST(Malformed3MF, DamagedContentTypesGiveTheirResults)
{
    ExpectResults(ContentTypes(), "model.3mf", Read);
}

TEST(Malformed3MF, DamagedMarkupGivesItsResults)
{
    ExpectResults(Markup(), "model.3mf", Read);
}

TEST(Malformed3MF, DamagedMeshesGiveTheirResults)
{
    ExpectResults(Geometry(), "model.3mf", Read);
}

TEST(Malformed3MF, DamagedObjectsGiveTheirResults)
{
    ExpectResults(Structure(), "model.3mf", Read);
}

TEST(Malformed3MF, HasItsRows)
{
    ExpectRowCount({Archives(), Entries(), ContentTypes(), Markup(), Geometry(), Structure()}, kRowCount);
}
