#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QString>

class TopoDS_Shape;

// STEP and IGES files for tests, made by OpenCASCADE, whose headers stay out of the tests. Nothing here may
// run beside another use of OpenCASCADE's readers and writers.

namespace test {

using CadShape = std::shared_ptr<const TopoDS_Shape>;

/// Turned about an axis through the origin first, moved then.
struct CadPlacement {
    double x = 0, y = 0, z = 0;
    double degrees = 0;
    double axisX = 0, axisY = 0, axisZ = 1;
};

/// A box with one corner in the origin.
CadShape Box(double x, double y, double z);
CadShape Cylinder(double radius, double height);
CadShape Sphere(double radius);
CadShape Torus(double largeRadius, double smallRadius);
/// A box with a round hole from top to bottom.
CadShape PiercedBox(double x, double y, double z, double holeRadius);
/// A flat square face about the origin with two round holes.
CadShape PiercedFace(double side, double holeRadius);
/// A curved face, bounded by parameters.
CadShape CylinderFace(double radius, double height);
/// A face of no area: all its corners on one line.
CadShape CollapsedFace();
/// A plane without bounds.
CadShape EndlessFace();

enum class CadPiece { CompSolid, Solid, Shell, Face, Wire, Edge, Vertex };
/// The piece of that kind that is met first in @p shape.
CadShape PieceOf(const CadShape& shape, CadPiece piece);
/// All faces of a shape, each a piece of its own.
std::vector<CadShape> FacesOf(const CadShape& shape);
CadShape Compound(const std::vector<CadShape>& shapes);
CadShape CompSolid(const std::vector<CadShape>& solids);
CadShape ShellOf(const std::vector<CadShape>& faces);
CadShape SolidOf(const CadShape& shell);
/// The same with the other orientation.
CadShape Reversed(const CadShape& shape);
/// The shape's geometry at another place.
CadShape Moved(const CadShape& shape, const CadPlacement& placement);

/// Whether @p call ends by an exception of OpenCASCADE's, which is no std::exception.
[[nodiscard]] bool EndsInStandardFailure(const std::function<void()>& call);

/// The documents that are open in this process.
int OpenDocumentCount();

struct CadPart;
using CadPartPointer = std::shared_ptr<const CadPart>;

struct CadInstance {
    CadPartPointer part;
    CadPlacement placement;
};

/// A label of a document: a shape or, when there are components, an assembly.
struct CadPart {
    QString name; ///< none when empty
    CadShape shape;
    std::vector<CadInstance> components;
};

CadPartPointer Part(const QString& name, const CadShape& shape);
CadPartPointer Assembly(const QString& name, const std::vector<CadInstance>& components);

/// Parts of several kinds.
struct SampleParts {
    CadPartPointer pin;   ///< a solid with flat and curved faces
    CadPartPointer ball;  ///< a solid of one face
    CadPartPointer pair;  ///< two solids
    CadPartPointer sheet; ///< a face
    CadPartPointer whole; ///< an assembly of the others, five solids
};
SampleParts MakeSampleParts();

/// Writes a file with these parts at the top of its document.
/// @return false when OpenCASCADE does not
[[nodiscard]] bool WriteSTEP(const QString& path, const std::vector<CadPartPointer>& parts);

/// What an IGES file makes of a solid.
enum class IGESSolids { AsFaces, AsSolids };
[[nodiscard]] bool WriteIGES(const QString& path, const std::vector<CadPartPointer>& parts,
                             IGESSolids solids = IGESSolids::AsSolids);

} // namespace test
