#include "apps/krmodel/Verdict.h"

#include "apps/krmodel/Texts.h"

namespace krmodel {

namespace {

enum class Weight { Reason, Remark };

/// What is said of a finding.
struct Rule {
    const char* kind;
    Finding Topology::*finding;
    Weight weight;
    const char* one;
    const char* many;
    const char* advice;
};

// In the order in which a person would repair the model.
constexpr Rule kRules[] = {
    {"stray-vertices", &Topology::strayVertices, Weight::Reason, "vertex that is not finite",
     "vertices that are not finite", "numbers were lost, export the model again"},
    {"open-edges", &Topology::openEdges, Weight::Reason, "open edge", "open edges",
     "the surface has a hole or a border, close it"},
    {"crowded-edges", &Topology::crowdedEdges, Weight::Reason, "edge of more than two facets",
     "edges of more than two facets", "parts touch there, join them or move them apart"},
    {"twisted-edges", &Topology::twistedEdges, Weight::Reason,
     "edge between facets that are wound against each other",
     "edges between facets that are wound against each other", "turn the facets of one side round"},
    {"inward-pieces", &Topology::inwardPieces, Weight::Reason, "piece turned inside out",
     "pieces turned inside out", "the facets face inwards, turn all of them round"},
    {"degenerate-facets", &Topology::degenerateFacets, Weight::Remark, "facet without area",
     "facets without area", "nothing is printed of that, remove it"},
    {"cavities", &Topology::cavities, Weight::Remark, "cavity", "cavities",
     "closed hollows, from which powder or resin cannot escape"},
    {"empty-objects", &Topology::emptyObjects, Weight::Remark, "object without facets",
     "objects without facets", "nothing is printed of that, remove it"},
};

QString PointText(const Vector3D<float>& point)
{
    return QStringLiteral("%1 %2 %3")
        .arg(NumberText(double(point.x)), NumberText(double(point.y)), NumberText(double(point.z)));
}

/// "; first from 0 0 0 to 1 0 0 mm, in object 2 (bolt)"
QString PlaceText(const Model& model, const Finding& finding)
{
    QStringList places;
    if (finding.first.size() == 2)
        places << QStringLiteral("from %1 to %2 mm")
                      .arg(PointText(finding.first[0]), PointText(finding.first[1]));
    else if (!finding.first.empty())
        places << QStringLiteral("at %1 mm").arg(PointText(finding.first[0]));
    if (model.meshes.size() > 1)
        places << QStringLiteral("in object %1 (%2)")
                      .arg(CountText(qint64(finding.object) + 1),
                           TextOrDash(NameText(model.meshes[finding.object]->GetObjectName())));
    return places.isEmpty() ? QString() : QStringLiteral("; first ") + places.join(QStringLiteral(", "));
}

Remark RemarkOf(const Model& model, const Rule& rule, const Finding& finding)
{
    const QString text =
        QStringLiteral("%1 %2: %3%4")
            .arg(CountText(finding.count), QLatin1String(finding.count == 1 ? rule.one : rule.many),
                 QLatin1String(rule.advice), PlaceText(model, finding));
    return {rule.kind, finding.count, text, finding};
}

Remark NothingToPrint(qint64 facets)
{
    return {"nothing-to-print",
            facets,
            QStringLiteral("nothing to print: none of the facets, %1, has an area").arg(CountText(facets)),
            {}};
}

Remark SeveralPieces(qint64 pieces)
{
    return {"pieces",
            pieces,
            QStringLiteral("%1 pieces: each is a body of its own, see that all of them are wanted")
                .arg(CountText(pieces)),
            {}};
}

} // namespace

Verdict Judge(const Model& model, const MeshReport& report)
{
    Verdict verdict;
    if (report.facets == report.topology.degenerateFacets.count)
        verdict.reasons.push_back(NothingToPrint(report.facets));
    for (const Rule& rule : kRules) {
        const Finding& finding = report.topology.*rule.finding;
        if (finding.count > 0)
            (rule.weight == Weight::Reason ? verdict.reasons : verdict.remarks)
                .push_back(RemarkOf(model, rule, finding));
    }
    if (report.topology.pieces > 1)
        verdict.remarks.push_back(SeveralPieces(report.topology.pieces));
    return verdict;
}

QString VerdictText(const Verdict& verdict)
{
    QString text;
    for (const Remark& reason : verdict.reasons)
        text += QStringLiteral("  ") + reason.text + QLatin1Char('\n');
    for (const Remark& remark : verdict.remarks)
        text += QStringLiteral("  remark: ") + remark.text + QLatin1Char('\n');
    return text;
}

QString DescribeVerdicts()
{
    QStringList reasons = {QStringLiteral("no facet with an area")};
    QStringList remarks = {QStringLiteral("several pieces")};
    for (const Rule& rule : kRules)
        (rule.weight == Weight::Reason ? reasons : remarks) << QLatin1String(rule.many);
    const QString gap = QStringLiteral("\n  ");
    return QStringLiteral("Not printable is a model with") + gap + reasons.join(gap) +
           QStringLiteral("\nNo more than a remark are") + gap + remarks.join(gap) +
           QStringLiteral("\nA verdict is no failure: a file that could be read ends with 0 either way.");
}

} // namespace krmodel
