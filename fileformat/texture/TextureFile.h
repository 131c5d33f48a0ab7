#pragma once

#include <QImage>
#include <QString>

#include "core/mesh/MeshMaterialParameters.h"
#include "fileformat/KRCoreFileFormatExport.h"

class QByteArray;
class QJsonObject;
class QUuid;
struct MeshTextureInfo;

/// A texture that is kept by itself: a picture, how it is laid on a surface, a name and an identifier. Saved
/// as a JSON document with the picture in it, in files "*.texture":
///
/// | key | value |
/// |---|---|
/// | header | texture_id, texture_name: strings |
/// | settings | texture_translation_x, texture_translation_y: numbers of 4 decimals |
/// | | texture_repeat_x, texture_repeat_y, texture_rotation_z: numbers of 2 decimals |
/// | | texture_wrapping: "repeat", "mirror", "clamp_edge" or "clamp_border" |
/// | | texture_border_color: "#" and alpha, red, green, blue in two lower-case hexadecimal digits each |
/// | image_data | the picture as a PNG file in base64, empty without one |
/// | version | 1 |
///
/// Plain value: it can be copied and moved, and different objects may be used by several threads at once.
/// Failures are told by false alone. Nothing is printed, but that the picture readers of Qt may complain
/// about a damaged picture. std::bad_alloc passes through when memory runs out.
class KRCORE_FILEFORMAT_EXPORT TextureFile {
public:
    /// "*.texture"
    static QString GetSupportedFileExtension();

    /// Whether @p extension is "texture", exactly so, without a dot.
    // Spelling is part of the interface.
    [[nodiscard]] static bool IsValidFileExtenson(const QString& extension);

    /// Takes over a texture of a mesh, whose pixels run bottom row first; the picture is the right way up.
    /// The name is that of the info's file without directory and last extension, "untitled" when nothing but
    /// blanks is left of it; the identifier is made from it in @p nameSpace.
    /// @param parameters  all of them are copied, the matrix as it is
    /// @return false, with nothing changed, for a null @p info or one whose isValidSize() is false
    [[nodiscard]] bool Load(const MeshTextureInfo* info, const MeshMaterialParameters& parameters,
                            const QUuid& nameSpace);

    /// Makes the identifier from the name: its name-based UUID (version 5) in @p nameSpace, as text without
    /// braces.
    void initPatternID(const QUuid& nameSpace);

    /// Hands the texture to a mesh: the picture, bottom row first, and the name, "untitled" for an empty one,
    /// as file name. What @p info held is dropped.
    /// @param longestSide  a picture whose longer side has more pixels is scaled down to it; 0 or less keeps
    ///                     all pixels
    /// @return false, with the info's picture empty, without a picture and for one that has more than 32768
    ///         pixels a side or 1 GiB of pixels
    [[nodiscard]] bool getTextureInfo(MeshTextureInfo& info, int longestSide) const;

    QString getTextureName() const { return m_textureName; } ///< without blanks around it once it was read
    /// The identifier, as initPatternID() made it or as it was read.
    const QString& GetPatternID() const { return m_patternID; }
    /// QImage::Format_RGB32, or null.
    const QImage& GetImage() const { return m_image; }
    /// How the picture is laid on a surface.
    const MeshMaterialParameters& GetParameters() const { return m_parameters; }

    /// Back to the state of a new object: no name, no identifier, no picture, default parameters.
    void Reset();

    /// Writes the texture into a file, indented. A file that is there is replaced once the new one is whole.
    /// @return true when every byte was written
    [[nodiscard]] bool SaveFile(const QString& path) const;

    /// Replaces @p buffer with the bytes of such a file.
    void GetSaveBuffer(QByteArray& buffer) const;

    /// Sets the four keys of @p object; others it may have stay.
    ///
    /// Only what the table above lists is kept of the parameters: translation z, repeat z, rotation x and y
    /// and the second wrap mode are not. Numbers are rounded, a tie away from zero; one that is not finite is
    /// stored as null. A wrap mode outside 0..3 has no key. Colour components are multiplied by 255 and
    /// truncated; if one of the four is then not in 0..255, or is NaN, the colour is "#00000000". The picture
    /// is stored without loss; without one, and for one whose PNG file has more than 750,000,000 bytes, the
    /// text is empty.
    void GetSaveObject(QJsonObject& object) const;

    /// @{
    /// Read a texture from a file, from its bytes, or from its JSON object. Reset() comes first.
    ///
    /// Keys are told by their exact letters, others are passed over. A value of another type than expected
    /// counts as the empty string, 0 for a number, an empty object: so an identifier becomes empty, and wrap
    /// modes, border colour and picture stay as Reset() left them, as they do for text that is none of the
    /// four wrap modes, no colour, no base64 or no picture. What a key sets:
    ///
    /// - texture_name: blanks around it are dropped; "untitiled" when nothing is left or the key is missing
    /// - texture_wrapping: both wrap modes
    /// - texture_border_color: any colour that QColor knows, "#rgb", "#rrggbb" and names too
    /// - image_data: a picture of any format that Qt knows by its bytes (TGA has no mark of its own),
    ///   transparent parts laid on white. Characters that are not of the base64 alphabet are passed over. One
    ///   that has more than 32768 pixels a side or 1 GiB of pixels, or does not tell its size before it is
    ///   decoded, is not decoded. Of a file that is cut short ImageTool::ReadPicture() tells what it shows
    ///
    /// The matrix of the parameters is then built from them.
    /// @return whether there is a picture. Without one everything else is read all the same; only a file or
    ///         buffer that is no JSON document, a file that cannot be read, and one whose top is an array
    ///         leave what Reset() gives. A buffer whose top is an array is read as an empty object
    [[nodiscard]] bool LoadFile(const QString& path);
    [[nodiscard]] bool LoadFromJsonBuffer(const QByteArray& buffer);
    [[nodiscard]] bool LoadFromJsonObject(const QJsonObject& object);
    /// @}

private:
    void ReadFields(const QJsonObject& object);
    bool LoadFromDocument(const QByteArray& bytes, bool acceptsArray);

    QString m_patternID;
    QString m_textureName;
    QImage m_image;
    MeshMaterialParameters m_parameters;
};
