#include "apps/krmodel/Formats.h"

#include <QFileInfo>
#include <QStringList>

#include "apps/krmodel/StlFormat.h"

namespace krmodel {

namespace {

// A new format is a new row.
constexpr Format kFormats[] = {
    {"STL", "stl", "triangles without units, text or binary", stl::Load, stl::Save, stl::IsComplete,
     stl::DeclaresNothing, stl::Variant},
};

QStringList SuffixesOf(const Format& format)
{
    return QString::fromLatin1(format.suffixes).split(QLatin1Char(' '));
}

} // namespace

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
    QStringList suffixes;
    for (const Format& format : kFormats)
        for (const QString& suffix : SuffixesOf(format))
            suffixes << QLatin1Char('.') + suffix;
    return suffixes.join(QStringLiteral(", "));
}

} // namespace krmodel
