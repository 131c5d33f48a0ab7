#include <algorithm>
#include <cstring>

#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <quazip.h>
#include <quazipfile.h>
#include <quazipfileinfo.h>

#include "apps/krmodel/ByteStream.h"
#include "apps/krmodel/LossList.h"
#include "apps/krmodel/ThreeMfFormat.h"

namespace krmodel::threemf {

namespace {

/// QuaZip never returns from an entry of this method that is cut short.
constexpr int kBzip2 = 12;

/// The value of ` name="..."` in a tag, in quotes of either kind.
QByteArray Attribute(const QByteArray& tag, const char* name)
{
    const QByteArray beginning = QByteArray(" ") + name + '=';
    const int place = tag.indexOf(beginning);
    const int from = place + beginning.size() + 1;
    if (place < 0 || from > tag.size())
        return {};
    return tag.mid(from, tag.indexOf(tag[from - 1], from) - from);
}

bool HasAttribute(const QByteArray& tag, const char* beginning)
{
    return tag.contains(beginning);
}

class Counter {
public:
    /// @param tag  what stands between '<' and '>', text behind it included
    void Take(const QByteArray& tag)
    {
        // Most tags are of triangles and vertices.
        if (tag.startsWith("triangle ")) {
            m_colouredTriangles += HasAttribute(tag, " p1=") || HasAttribute(tag, " pid=") ? 1 : 0;
        } else if (!tag.startsWith('/') && !tag.startsWith("vertex ")) {
            TakeOther(tag, NameOf(tag));
        }
    }
    void EndPart()
    {
        for (auto use = m_components.constBegin(); use != m_components.constEnd(); ++use) {
            m_nested += m_composites.contains(use.key()) ? use.value() : 0;
            m_repeated += m_composites.contains(use.key()) ? 0 : use.value() - 1;
        }
        for (const qint64 uses : qAsConst(m_items))
            m_repeated += uses - 1;
        m_composites.clear();
        m_components.clear();
        m_items.clear();
        ++m_parts;
    }

    std::vector<Loss> GetLosses() const
    {
        LossList losses;
        losses.Add("nested-components", m_nested,
                   "%1 {component that is|components that are} made of components");
        losses.Add("repeated-placements", m_repeated,
                   "%1 further {placement|placements} of objects that are placed more than once");
        losses.Add(
            "other-parts", m_parts - 1,
            "that %1 model {part stands|parts stand} beside the package's root model: all are taken for one");
        losses.Add("triangle-colours", m_colouredTriangles,
                   "the {colour or texture|colours or textures} of %1 {triangle|triangles}");
        losses.Add("object-colours", m_colouredObjects, "the {colour|colours} of %1 {object|objects}");
        losses.Add("colour-groups", std::max<qint64>(m_colourGroups - 1, 0),
                   "%1 {group|groups} of colours or materials beside the first");
        losses.Add("texture-coordinates", m_textureCoordinates, "%1 texture {coordinate|coordinates}");
        losses.Add("textures", m_textures, "%1 {texture|textures}");
        losses.Add("beams", m_beams, "%1 {beam|beams} of lattices");
        losses.Add("slices", m_slices, "%1 {slice|slices}");
        losses.Add("object-types", m_otherTypes,
                   "that %1 {object is no model|objects are no models} but support or the like");
        return losses.Get();
    }

private:
    /// Without a prefix.
    static QByteArray NameOf(const QByteArray& tag)
    {
        const auto* const end = std::find_if(tag.begin(), tag.end(), [](char character) {
            return std::strchr(" \t\r\n/>", character) != nullptr;
        });
        const QByteArray name = tag.left(int(end - tag.begin()));
        return name.mid(name.indexOf(':') + 1);
    }

    void TakeOther(const QByteArray& tag, const QByteArray& name)
    {
        if (name == "object")
            TakeObject(tag);
        else if (name == "components")
            m_composites.insert(m_object);
        else if (name == "component")
            ++m_components[Attribute(tag, "objectid")];
        else if (name == "item")
            ++m_items[Attribute(tag, "objectid")];
        else
            Count(name);
    }
    void TakeObject(const QByteArray& tag)
    {
        m_object = Attribute(tag, "id");
        m_colouredObjects += HasAttribute(tag, " pid=") ? 1 : 0;
        const QByteArray type = Attribute(tag, "type");
        m_otherTypes += type.isEmpty() || type == "model" ? 0 : 1;
    }
    void Count(const QByteArray& name)
    {
        const struct {
            const char* name;
            qint64& count;
        } kCounts[] = {{"tex2coord", m_textureCoordinates},
                       {"texture2d", m_textures},
                       {"basematerials", m_colourGroups},
                       {"colorgroup", m_colourGroups},
                       {"compositematerials", m_colourGroups},
                       {"multiproperties", m_colourGroups},
                       {"beam", m_beams},
                       {"slice", m_slices}};
        for (const auto& entry : kCounts)
            if (name == entry.name)
                ++entry.count;
    }

    QByteArray m_object; ///< the id of the latest
    QSet<QByteArray> m_composites;
    QHash<QByteArray, qint64> m_components; ///< how often each object is named
    QHash<QByteArray, qint64> m_items;
    qint64 m_parts = 0, m_nested = 0, m_repeated = 0, m_colouredTriangles = 0, m_colouredObjects = 0;
    qint64 m_colourGroups = 0, m_textureCoordinates = 0, m_textures = 0, m_beams = 0, m_slices = 0;
    qint64 m_otherTypes = 0;
};

void ScanPart(QuaZip& zip, Counter& counter)
{
    QuaZipFile part(&zip);
    if (!part.open(QIODevice::ReadOnly))
        return;
    bool isInComment = false;
    // Each piece begins behind a '<'; the '>' and text stand in it. Comments may hold tags.
    VisitPieces(part, '<', [&](const QByteArray& tag) {
        isInComment = isInComment || tag.startsWith("!--");
        if (isInComment)
            isInComment = !tag.contains("-->");
        else
            counter.Take(tag);
    });
    counter.EndPart();
}

} // namespace

std::vector<Loss> Scan(const QString& fileName, const Model&)
{
    QuaZip zip(fileName);
    if (!QFileInfo(fileName).isFile() || !zip.open(QuaZip::mdUnzip))
        return {};
    Counter counter;
    QuaZipFileInfo64 info;
    for (bool isEntry = zip.goToFirstFile(); isEntry; isEntry = zip.goToNextFile())
        if (zip.getCurrentFileInfo(&info) && info.method != kBzip2 &&
            info.name.endsWith(QStringLiteral(".model"), Qt::CaseInsensitive))
            ScanPart(zip, counter);
    return counter.GetLosses();
}

} // namespace krmodel::threemf
