#pragma once

#include <vector>

#include <QString>

#include <TDF_LabelSequence.hxx>
#include <TopoDS_Shape.hxx>

class TDF_Label;
class TopLoc_Location;

namespace kr::cad {

/// A solid, a shell or a face, moved to its place by a copy of its geometry.
struct PlacedShape {
    TopoDS_Shape shape;
    QString name;
};

/// Appends what stands under a label: assemblies part by part, of compounds the solids.
/// @param parentLocation  placement of the assembly that holds the label
/// @param rootName        in front of the names; empty for none
void CollectLabelShapes(const TopLoc_Location& parentLocation, const TDF_Label& label,
                        const QString& rootName, std::vector<PlacedShape>& shapes);

/// What stands under all these labels, in their order.
std::vector<PlacedShape> CollectShapes(const TDF_LabelSequence& labels, const QString& rootName);

} // namespace kr::cad
