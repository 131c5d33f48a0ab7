#include <quazip.h>
#include <quazipfile.h>
#include <quazipnewinfo.h>

#include "core/common/FileName_p.h"
#include "fileformat/3mf/Model3MF.h"
#include "fileformat/3mf/PackageDocuments_p.h"

namespace {

// Read and write for owner, user, group and others, as QFileDevice counts them.
constexpr QFileDevice::Permissions::Int kPermissions = 0x6666;

// Deflated at the default level. Errors are not reported: whoever must know reads the package again.
void WriteEntry(QuaZip& archive, const QString& name, const QByteArray& bytes)
{
    QuaZipNewInfo info(name);
    info.setPermissions(QFileDevice::Permissions(kPermissions));
    QuaZipFile entry(&archive);
    if (entry.open(QIODevice::WriteOnly, info))
        entry.write(bytes);
}

} // namespace

bool Model3MF::SaveFile(const QString& fileName, const std::vector<ModelObjectInfo>& objects,
                        Vector3D<float> offset)
{
    // Before the file is touched: when memory runs out, the old one stays.
    QByteArray model;
    kr::package3mf::BuildModel(*this, objects, offset, model);
    QByteArray contentTypes;
    kr::package3mf::BuildContentTypes(contentTypes);
    QByteArray relationships;
    kr::package3mf::BuildPackageRelationships(!m_imageData.isEmpty(), relationships);

    QuaZip archive(fileName);
    if (!kr::CanNameAFile(fileName) || !archive.open(QuaZip::mdCreate))
        return false;
    WriteEntry(archive, QStringLiteral("[Content_Types].xml"), contentTypes);
    if (!m_imageData.isEmpty())
        WriteEntry(archive, m_imageName, m_imageData);
    WriteEntry(archive, QStringLiteral("3D/3dmodel.model"), model);
    WriteEntry(archive, QStringLiteral("_rels/.rels"), relationships);
    return true;
}
