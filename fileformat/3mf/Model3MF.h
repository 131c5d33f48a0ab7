#pragma once

#include <utility>
#include <vector>

#include <QByteArray>
#include <QMap>
#include <QString>

#include "core/math/Matrix4.h"
#include "core/math/Vector3D.h"
#include "fileformat/KRCoreFileFormatExport.h"

class Mesh;
class QXmlStreamReader;

namespace kr::package3mf {
class Placements;
class SetAsideElements;
class XmlWork;
} // namespace kr::package3mf

/// One 3MF package: meshes with their placements, unit, metadata, colours and thumbnail.
///
/// Loading is tolerant: elements that mean nothing here are passed over, names are compared without regard to
/// namespaces and prefixes but with exact letters, what is no number reads as 0. Only what is no well-formed
/// XML makes a load fail. Objects made of other objects ("components") yield no meshes of their own: their
/// placement goes to the meshes that they name. Colours and textures are kept for the package, not for its
/// triangles.
///
/// Time and memory are linear in what the entries inflate to. Qt's XML reader compares each attribute of an
/// element with each other, looks for a prefix among all that are declared, and puts what a document type
/// declares into the document again and again: a part that was made to keep it busy with that fails as one
/// that is no well-formed XML does, when the reader has done the work of a billion comparisons of two
/// attributes for the package, and 4 more for each byte, or before the reader begins when there is a tag of
/// more than 20,000 attributes, a document type of more than 230,000 characters or with dozens of parameter
/// entities, references behind one to hundreds of millions of characters, or many encodings declared. Nothing
/// that programs write comes near. The Parser functions, for which the host drives the reader, stop nothing.
///
/// A Model3MF can be copied; copies name the same meshes. One object must not be used by two threads at once,
/// different ones may be.
///
/// Nobody but the host ever deletes a mesh: neither the destructor nor a failed load does. What loading
/// created, GetObjects() names, also after a failure, and belongs to the host.
class KRCORE_FILEFORMAT_EXPORT Model3MF {
public:
    /// One object to be saved.
    struct ModelObjectInfo {
        Mesh* mesh = nullptr;      ///< the host's; only read
        Vector3D<float> position;  ///< part of the translation, see SaveFile()
        Vector3D<float> offset;    ///< the same
        Matrix4<double> transform; ///< rotation and scale; its translation is not used
        QString name;              ///< of the object
    };

    /// A group of display colours.
    struct BaseMaterial {
        int id = -1;                 ///< below 0: there is no group
        std::vector<QString> colors; ///< `#RRGGBB` or `#RRGGBBAA` as a rule; neither read nor checked
    };

    /// A picture of the package that serves as a texture.
    struct Texture {
        int id = -1; ///< below 0: there is no texture
        /// @{
        /// What lies beyond the picture: "wrap", "mirror", "clamp" or "none".
        QString tileStyleU = QStringLiteral("wrap");
        QString tileStyleV = QStringLiteral("wrap");
        /// @}
        QString path;                                      ///< in the package
        QString contentType = QStringLiteral("image/png"); ///< of the picture
    };

    /// A list of texture coordinates.
    struct TextureGroup {
        int id = -1;     ///< of the group
        Texture texture; ///< the one that the group names; id -1 if there is none
        std::vector<std::pair<double, double>> coords; ///< u and v
    };

    /// No objects, the unit "millimeter", the image name "Metadata/thumbnail.png", no image.
    Model3MF() = default;

    /// Reads the package @p fileName into this object, in addition to what it holds: meant to be called once.
    ///
    /// The entries "[Content_Types].xml", anywhere in the archive, tell the name extension of model parts.
    /// All entries whose names end with it are read by LoadModel(), in the archive's order; the last picture
    /// (.png, .jpg, .jpeg) under "Metadata/" is kept as the image. Upper and lower case differ. Of entries
    /// with one name the first is read for each. An entry that cannot be opened is passed over, as is one
    /// whose name is empty or begins with a slash, and one compressed by bzip2, which no package should have;
    /// one that cannot be inflated to its end counts with what came out before, whatever its check sum is.
    ///
    /// When the content types declare no extension for models, or name the model in an "Override" (which has
    /// none), every entry is taken for a model part, and one that is no XML makes the load fail.
    ///
    /// @return false when content types or a model part are no well-formed XML, or larger than 2,147,483,615
    ///         bytes (an image of such a size is passed over). What was read before stays. A file that is
    ///         missing or no archive gives true and nothing more: GetObjects() is empty
    /// @throws std::bad_alloc when memory runs out; what was read before stays. Memory follows the bytes that
    ///         entries really inflate to, and only needed ones are inflated
    [[nodiscard]] bool LoadFile(const QString& fileName);

    /// Reads the content types of a package: of each "Default" and "Override" whose ContentType is that of
    /// relationships or of a 3D model, the Extension, empty when there is none. The last one counts.
    /// @return false when @p data is no well-formed XML; what came before the error counts
    [[nodiscard]] bool LoadContentType(const QByteArray& data);

    /// Reads one model part. Adds a mesh for each "object" that is not made of components, empty when it has
    /// no "mesh"; sets unit, metadata, colours. "item" and "component" place the meshes that came before
    /// them. A "model" without a unit leaves an empty one.
    /// @return false when @p data is no well-formed XML. Meshes and all else that came before the error stay,
    ///         the mesh in which it occurs included
    /// @throws std::bad_alloc when memory runs out; all meshes but the one being read stay
    [[nodiscard]] bool LoadModel(const QByteArray& data);

    /// The parsers of single elements, for a host that drives a reader itself. Each expects the reader on the
    /// element's start tag and leaves it on the end tag, or at the end of the document.
    ///
    /// "object": adds a mesh with the id and name of the element, its faces with indices outside the vertex
    /// list dropped, finalised (normals and neighbours at their first request) and measured. Or passes on the
    /// components (ParserComponent).
    /// @return true
    bool ParserObject(QXmlStreamReader& reader);
    /// "components" of the object @p componentsId: each mesh whose object id a "component" names gets that
    /// components id and the component's transform, if it has one. A component that names another object of
    /// components finds no mesh.
    /// @return true
    bool ParserComponent(QXmlStreamReader& reader, int componentsId);
    /// "build": each "item" with a transform multiplies it, on the right, to the matrix of every mesh whose
    /// object id or components id it names.
    /// @return true
    bool ParserBuild(QXmlStreamReader& reader);
    /// "texture2dgroup": adds a texture group. A coordinate's missing u or v repeats the one before, at first
    /// 0.
    /// @return false, with nothing added, when the element has no id
    bool ParserTexture(QXmlStreamReader& reader);

    /// Enters each mesh's object id under its components id (-1 without one), in addition to what earlier
    /// calls entered.
    void ReadComponentsformId();

    /// Writes a package, replacing the file @p fileName: content types, the image if there is one, the
    /// model and the relationships. Objects are numbered from 1 in their order, whatever their meshes'
    /// ids are; coordinates have six significant digits, neither transformed nor scaled. An object is
    /// placed by its transform with the translation replaced by position + offset + @p offset. Unit,
    /// metadata, colours and image are this object's. The relationships name the image as
    /// "/Metadata/thumbnail.png" whatever its name is. Characters that XML cannot hold are left out. All
    /// vertices and faces of the lists are written, whatever the counts of the mesh are; no index is
    /// checked.
    /// @param objects  with a mesh each
    /// @return false when the archive cannot be created. Later errors of writing are not reported
    /// @throws std::bad_alloc when memory runs out, or the model part, which is built in memory, would be
    ///         larger than 2,147,483,615 bytes. An old file then stays as it was
    [[nodiscard]] bool SaveFile(const QString& fileName, const std::vector<ModelObjectInfo>& objects,
                                Vector3D<float> offset);

    /// @{
    /// The meshes in the order in which they were read. They belong to the host.
    std::vector<Mesh*> GetObjects() const { return m_objects; }
    void SetObjects(const std::vector<Mesh*>& objects) { m_objects = objects; }
    /// @}

    /// @{
    /// The unit of length as the package spells it.
    QString GetUnit() const { return m_unit; }
    void SetUnit(const QString& unit) { m_unit = unit; }
    /// @}

    /// @{
    /// The length of a unit in millimetres: of "micron", "millimeter", "centimeter", "inch", "foot" and
    /// "meter", spelt so; 1 for all others. Coordinates are never scaled by this class.
    static double GetUnitScale(const QString& unit);
    double GetUnitScale() const { return GetUnitScale(m_unit); }
    /// @}

    /// @{
    /// The package's colours: of several groups the colours of all, and the last one's id.
    BaseMaterial GetMaterial() const { return m_material; }
    void SetMaterial(const BaseMaterial& material) { m_material = material; }
    /// @}

    /// @{
    /// The metadata of the model by their names.
    QMap<QString, QString> GetDescription() const { return m_description; }
    void SetDescription(const QMap<QString, QString>& description) { m_description = description; }
    void AddDescription(const QString& name, const QString& value) { m_description.insert(name, value); }
    /// @}

    /// @{
    /// The thumbnail: its file as it is, and its name in the package.
    QByteArray GetImage(QString& name) const
    {
        name = m_imageName;
        return m_imageData;
    }
    void SetImage(const QByteArray& data, const QString& name)
    {
        m_imageData = data;
        m_imageName = name;
    }
    /// @}

    /// @{
    /// Loading fills neither textures nor their images.
    std::vector<Texture> GetTextures() const { return m_textures; }
    std::vector<TextureGroup> GetTextureGroups() const { return m_textureGroups; }
    const QMap<QString, QByteArray>& GetTextureImages() const { return m_textureImages; }
    /// @}

    /// What ReadComponentsformId() entered: object ids by components id.
    const QMap<int, std::vector<int>>& GetComponentMembers() const { return m_componentMembers; }

    /// @{
    /// What LoadContentType() found; null before.
    QString GetModelExtension() const { return m_modelExtension; }
    QString GetRelsExtension() const { return m_relsExtension; }
    /// @}

    /// A transform as 3MF writes it: numbers apart by blanks, three for each column of the matrix, the
    /// translation last. Missing ones are those of the identity, surplus ones are passed over; what is no
    /// number reads as 0.
    static Matrix4<double> ConvertFrom3MFMatStrToMat(const QString& text);
    /// The same the other way round, with six significant digits.
    static QString ConvertFromMatTo3MFMatStr(const Matrix4<double>& matrix);

private:
    bool LoadContentType(const QByteArray& data, kr::package3mf::XmlWork& work);
    bool LoadModel(const QByteArray& data, kr::package3mf::XmlWork& work);
    void ReadModel(QXmlStreamReader& reader, kr::package3mf::XmlWork& work,
                   kr::package3mf::SetAsideElements& setAside);
    void ReadMetadata(QXmlStreamReader& reader, kr::package3mf::XmlWork& work);
    void ReadObject(QXmlStreamReader& reader, kr::package3mf::XmlWork& work,
                    kr::package3mf::SetAsideElements& setAside, kr::package3mf::Placements& placements);
    void ReadMesh(QXmlStreamReader& reader, kr::package3mf::XmlWork& work,
                  kr::package3mf::SetAsideElements& setAside, Mesh& mesh);
    static void ReadComponents(QXmlStreamReader& reader, kr::package3mf::XmlWork& work, int componentsId,
                               kr::package3mf::Placements& placements);
    static void ReadBuild(QXmlStreamReader& reader, kr::package3mf::XmlWork& work,
                          kr::package3mf::Placements& placements);

    QString m_modelExtension;
    QString m_relsExtension;
    QString m_imageName = QStringLiteral("Metadata/thumbnail.png");
    QString m_unit = QStringLiteral("millimeter");
    BaseMaterial m_material;
    QByteArray m_imageData;
    std::vector<Mesh*> m_objects;
    QMap<QString, QString> m_description;
    std::vector<TextureGroup> m_textureGroups;
    std::vector<Texture> m_textures;
    QMap<QString, QByteArray> m_textureImages;
    QMap<int, std::vector<int>> m_componentMembers;
};
