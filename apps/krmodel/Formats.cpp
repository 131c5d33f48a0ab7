#include "apps/krmodel/Formats.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>

#include "apps/krmodel/CadFormat.h"
#include "apps/krmodel/ObjFormat.h"
#include "apps/krmodel/StlFormat.h"
#include "apps/krmodel/ThreeMfFormat.h"

namespace krmodel {

namespace {

// A new format is a new row.
constexpr Format kFormats[] = {
    {"STL", "stl", "triangles without units, text or binary", Variants::BinaryOrText, Contents::Facets,
     stl::Load, stl::Scan, stl::Save, stl::IsComplete, stl::Variant, Rounding::None, Rounding::SixDecimals,
     stl::VisitFacets, false, true},
    {"OBJ", "obj", "triangles without units, texture coordinates; materials are read, not written",
     Variants::TextAlone, Contents::Facets, obj::Load, obj::Scan, obj::Save, obj::IsComplete, nullptr,
     Rounding::None, Rounding::SixDecimals, nullptr, true, true},
    {"3MF", "3mf", "named objects with placements, a unit, metadata, colours and a thumbnail",
     Variants::BinaryAlone, Contents::Objects, threemf::Load, threemf::Scan, threemf::Save,
     threemf::IsComplete, nullptr, Rounding::SixDigits, Rounding::SixDigits, nullptr},
    {"STEP", "stp step", "solids and shells, tessellated, with names and in their places; read alone",
     Variants::TextAlone, Contents::Objects, cad::LoadStep, cad::ScanStep, nullptr, nullptr, nullptr,
     Rounding::None, Rounding::None, nullptr, false, false, true},
    {"IGES", "igs iges", "solids, shells and faces, tessellated, with names and in their places; read alone",
     Variants::TextAlone, Contents::Objects, cad::LoadIges, cad::ScanIges, nullptr, nullptr, nullptr,
     Rounding::None, Rounding::None, nullptr, false, false, true},
};

QStringList SuffixesOf(const Format& format)
{
    return QString::fromLatin1(format.suffixes).split(QLatin1Char(' '));
}

QStringList PointedSuffixesOf(const Format& format)
{
    return SuffixesOf(format).replaceInStrings(QRegularExpression(QStringLiteral("^")), QStringLiteral("."));
}

QString SuffixesOfAll(bool (*isWanted)(const Format&))
{
    QStringList suffixes;
    for (const Format& format : kFormats)
        if (isWanted(format))
            suffixes << PointedSuffixesOf(format);
    return suffixes.join(QStringLiteral(", "));
}

} // namespace

Refusal NotReadableAs(const char* formatName)
{
    return {ExitCode::NotReadable,
            QStringLiteral("not readable as %1, it is damaged, cut short or of another format")
                .arg(QLatin1String(formatName))};
}

Refusal HoldsNoFacet()
{
    return {ExitCode::Empty, QStringLiteral("holds no facet")};
}

const Format* FindFormat(const QString& fileName)
{
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    for (const Format& format : kFormats)
        if (SuffixesOf(format).contains(suffix))
            return &format;
    return nullptr;
}

QString KnownSuffixes()
{
    return SuffixesOfAll([](const Format&) { return true; });
}

QString WritableSuffixes()
{
    return SuffixesOfAll([](const Format& format) { return format.save != nullptr; });
}

QString DescribeFormats()
{
    QString lines;
    for (const Format& format : kFormats)
        lines += QStringLiteral("  %1 (%2): %3\n")
                     .arg(QLatin1String(format.name), PointedSuffixesOf(format).join(QStringLiteral(", ")),
                          QLatin1String(format.description));
    return lines;
}

} // namespace krmodel
