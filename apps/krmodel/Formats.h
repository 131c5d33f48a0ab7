#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <QByteArray>
#include <QMap>
#include <QString>

#include "apps/krmodel/ExitCode.h"
#include "apps/krmodel/Rounding.h"
#include "core/mesh/Mesh.h"
#include "core/mesh/MeshTextureGroup.h"

namespace krmodel {

/// The unit of a file's lengths.
struct Unit {
    QString name; ///< as the file spells it; empty when it does not tell
    double millimetres = 1;
};

/// Colours that a file names beside its objects.
struct ColourGroup {
    int id = -1;                ///< below 0: there is none
    std::vector<QString> texts; ///< as in the file
};

/// A picture of the model that a file keeps.
struct Thumbnail {
    QString name;     ///< in the file
    QByteArray bytes; ///< the picture's file as it is; empty: there is none
};

/// What one file holds.
struct Model {
    /// One an object, with its ids, name and transform, in lengths of the unit.
    std::vector<std::unique_ptr<Mesh>> meshes;
    Unit unit;
    QMap<QString, QString> metadata;
    ColourGroup colours;
    Thumbnail thumbnail;
    /// Runs of the first mesh's faces with their materials, counted as the file has them: faces may be gone
    /// since. GroupOfEachFace() knows what they are.
    std::vector<MeshTextureGroup> groups;
    bool wantsNormals = false; ///< a normal is to be written for each facet, where a format can do without
};

/// How a file is to be read, where a format leaves a choice.
struct ReadOptions {
    /// CAD formats: how far facets may be from the surface, in thousandths of four times the longest side of
    /// a solid or shell; in millimetres for a loose face.
    double deflection = 0.1;
    /// CAD formats: the largest angle between facets along a curve, in degrees; in radians for a loose face.
    double angle = 15;
    /// CAD formats: whether the file's name stands in front of the objects' names.
    bool prefixesFileName = true;
};

/// Why a file gave no model.
struct Refusal {
    ExitCode code = ExitCode::NotReadable;
    QString reason; ///< to stand behind the file's name and a colon
};

enum class Encoding { Binary, Text };
enum class Variants { BinaryOrText, TextAlone, BinaryAlone };

/// What the program reads of a format and writes to it.
enum class Contents {
    Facets,  ///< facets, without a unit and in place
    Objects, ///< objects with names and placements, a unit, and all else that a Model holds
};

/// One kind of what is not carried from a file to another.
struct Loss {
    QString kind;     ///< a word for programs; it stays
    qint64 count = 0; ///< of what the text tells, above 0
    QString text;     ///< for people
};

/// Three corners.
using Facet = std::array<Vector3D<float>, 3>;

/// What the program can do with one file format. All operations take a file name; exceptions of the library
/// pass.
struct Format {
    const char* name;
    const char* suffixes; ///< without points, separated by blanks, lower case
    const char* description;
    Variants variants;
    Contents contents;
    /// Reads a file; why it could not, if so. A file that was read may hold no facet.
    std::optional<Refusal> (*load)(const QString& fileName, const ReadOptions& options, Model& model);
    /// Looks for what a file that was loaded declares and the model does not hold. Reads it as a stream:
    /// memory does not grow with the file, but with the number of its objects.
    std::vector<Loss> (*scan)(const QString& fileName, const Model& model);
    /// Writes a model; null, as what follows, for a format that is only read; false when the file cannot be
    /// opened for writing.
    bool (*save)(const QString& fileName, const Model& model, Encoding encoding);
    /// Whether the file is ended as save() ends it. What it holds is compared by FindDifference().
    bool (*isComplete)(const QString& fileName, const Model& model, Encoding encoding);
    /// The variant that the file is in, for the report ("binary", "text"); null for a format that has but
    /// one.
    QString (*variant)(const QString& fileName);
    Rounding binaryRounding = Rounding::None;
    Rounding textRounding = Rounding::None;
    /// Calls @p visit for each facet in the file as it stands there; false for a file that save() did not
    /// write. Null when load() keeps all facets as they are.
    bool (*visitFacets)(const QString& fileName, Encoding encoding,
                        const std::function<void(const Facet& facet)>& visit) = nullptr;
    bool holdsTexture = false; ///< save() writes texture coordinates
    bool holdsNormals = false; ///< save() writes a normal for each facet, always or when the model wants them
    bool isTessellated = false; ///< load() makes facets of surfaces, once it has read the file

    Rounding RoundingOf(Encoding encoding) const
    {
        return encoding == Encoding::Binary ? binaryRounding : textRounding;
    }
};

/// The refusal of a file of which nothing is known but that the format's reader could not read it.
Refusal NotReadableAs(const char* formatName);
/// The refusal of a file that holds no facet.
Refusal HoldsNoFacet();

/// The format that the file name's suffix stands for, in any case; null when there is none.
const Format* FindFormat(const QString& fileName);

/// The suffixes of all formats for messages: ".stl".
QString KnownSuffixes();
/// Of those that can be written.
QString WritableSuffixes();

/// A line for each format for the help text: name, suffixes, description.
QString DescribeFormats();

} // namespace krmodel
