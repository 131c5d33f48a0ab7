#include "fileformat/cad/ShapeWalk_p.h"

#include <BRepBuilderAPI_Transform.hxx>
#include <TDF_Label.hxx>
#include <TDataStd_Name.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <XCAFDoc_ShapeTool.hxx>

namespace kr::cad {

namespace {

struct Names {
    QString label; ///< as the file has it
    QString mesh;  ///< with the root in front; empty when the label has no name, or the root's
};

TDF_Label ReferredLabel(const TDF_Label& label)
{
    TDF_Label referred;
    return XCAFDoc_ShapeTool::GetReferredShape(label, referred) ? referred : label;
}

QString LabelName(const TDF_Label& label)
{
    Handle(TDataStd_Name) name;
    if (!label.FindAttribute(TDataStd_Name::GetID(), name))
        return {};
    const TCollection_ExtendedString& text = name->Get();
    return QString::fromUtf16(text.ToExtString(), text.Length()).trimmed();
}

QString MeshName(const QString& labelName, const QString& rootName)
{
    if (labelName.isEmpty() || labelName == rootName)
        return {};
    return rootName.isEmpty() ? labelName : rootName + QStringLiteral(" - ") + labelName;
}

QString SolidName(const Names& names, int number)
{
    const QString& stem = names.mesh.isEmpty() ? names.label : names.mesh;
    return (stem.isEmpty() ? stem : stem + QLatin1Char('-')) + QString::number(number);
}

void AppendSolids(const TopoDS_Shape& compound, const Names& names, std::vector<PlacedShape>& shapes)
{
    int number = 0;
    for (TopExp_Explorer solids(compound, TopAbs_SOLID); solids.More(); solids.Next())
        shapes.push_back({solids.Current(), SolidName(names, ++number)});
}

void AppendShape(const TopoDS_Shape& shape, const TopLoc_Location& location, const Names& names,
                 std::vector<PlacedShape>& shapes)
{
    if (shape.IsNull())
        return;
    // A copy moves the geometry itself, so that no two labels share what the mesher writes to.
    const TopoDS_Shape placed = BRepBuilderAPI_Transform(shape, location.Transformation(), true).Shape();
    switch (shape.ShapeType()) {
    case TopAbs_COMPOUND:
    case TopAbs_COMPSOLID:
        return AppendSolids(placed, names, shapes);
    case TopAbs_SOLID:
    case TopAbs_SHELL:
    case TopAbs_FACE:
        shapes.push_back({placed, names.mesh});
        return;
    default: // wires, edges and vertices have no triangles
        return;
    }
}

} // namespace

void CollectLabelShapes(const TopLoc_Location& parentLocation, const TDF_Label& label,
                        const QString& rootName, std::vector<PlacedShape>& shapes)
{
    // Name, parts and geometry are those of what an instance refers to; the place is its own.
    const TDF_Label shapeLabel = ReferredLabel(label);
    const TopLoc_Location location = parentLocation.Multiplied(XCAFDoc_ShapeTool::GetLocation(label));
    TDF_LabelSequence components;
    if (XCAFDoc_ShapeTool::GetComponents(shapeLabel, components, false)) {
        for (const TDF_Label& component : components)
            CollectLabelShapes(location, component, rootName, shapes);
        return;
    }
    const QString labelName = LabelName(shapeLabel);
    AppendShape(XCAFDoc_ShapeTool::GetShape(shapeLabel), location, {labelName, MeshName(labelName, rootName)},
                shapes);
}

std::vector<PlacedShape> CollectShapes(const TDF_LabelSequence& labels, const QString& rootName)
{
    std::vector<PlacedShape> shapes;
    for (const TDF_Label& label : labels)
        CollectLabelShapes(TopLoc_Location(), label, rootName, shapes);
    return shapes;
}

} // namespace kr::cad
