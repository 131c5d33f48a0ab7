#include "apps/krmodel/ObjFormat.h"

#include <algorithm>

#include <QFile>

#include "apps/krmodel/Materials.h"
#include "fileformat/obj/OBJFile.h"

namespace krmodel::obj {

namespace {

constexpr float kReaderMergeDistanceMm = 0.03f;
constexpr int kWholePictures = 0;
constexpr qint64 kBlockSize = 1 << 20;

bool HasStatements(const Mesh& mesh, const std::vector<MeshTextureGroup>& groups)
{
    return !mesh.GetVerticesVecPtr()->empty() || !mesh.GetTexCoordVecPtr()->empty() ||
           !mesh.GetTextureFacesVecPtr()->empty() || !groups.empty();
}

/// Counts the lines of a text that begin with an 'f', from block to block.
class FaceLines {
public:
    void Take(const QByteArray& block)
    {
        m_count += block.count("\nf") + (m_isAtLineStart && block.startsWith('f') ? 1 : 0);
        m_isAtLineStart = block.endsWith('\n');
    }
    qint64 GetCount() const { return m_count; }
    bool IsLastEnded() const { return m_isAtLineStart; }

private:
    qint64 m_count = 0;
    bool m_isAtLineStart = true;
};

} // namespace

std::optional<Refusal> Load(const QString& fileName, const ReadOptions&, Model& model)
{
    auto mesh = std::make_unique<Mesh>(kReaderMergeDistanceMm);
    if (!OBJFile::LoadFile(fileName, *mesh, model.groups, false, kWholePictures) ||
        !HasStatements(*mesh, model.groups))
        return NotReadableAs("OBJ");
    model.meshes.push_back(std::move(mesh));
    return std::nullopt;
}

bool Save(const QString& fileName, const Model& model, Encoding)
{
    std::vector<const Mesh*> meshes;
    std::vector<bool> textureFlags;
    for (const auto& mesh : model.meshes) {
        meshes.push_back(mesh.get());
        textureFlags.push_back(HoldsTexture(*mesh));
    }
    return OBJFile::SaveFile(fileName, meshes, textureFlags, model.wantsNormals);
}

bool IsComplete(const QString& fileName, const Model& model, Encoding)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    // Up to the size: a device may have no end.
    FaceLines lines;
    for (qint64 left = file.size(); left > 0;) {
        const QByteArray block = file.read(std::min(left, kBlockSize));
        if (block.isEmpty())
            return false;
        lines.Take(block);
        left -= block.size();
    }
    qint64 faces = 0;
    for (const auto& mesh : model.meshes)
        faces += mesh->GetFaceNum();
    return lines.GetCount() == faces && lines.IsLastEnded();
}

} // namespace krmodel::obj
