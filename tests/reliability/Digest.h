#pragma once

#include <cstddef>
#include <string>
#include <type_traits>
#include <vector>

#include <QByteArray>
#include <QCryptographicHash>
#include <QString>

class Mesh;
struct MeshMaterialInfo;
struct MeshTextureGroup;

namespace test {

/// Tells results apart by every bit of theirs.
class Digest {
public:
    template<typename Value>
    Digest& Add(const Value& value)
    {
        static_assert(std::has_unique_object_representations_v<Value> || std::is_floating_point_v<Value>,
                      "padding is no part of a result");
        return AddBytes(&value, sizeof value);
    }
    /// A list of records that consist of numbers of one kind.
    template<typename Record>
    Digest& AddList(const std::vector<Record>& list)
    {
        static_assert(std::is_trivially_copyable_v<Record>, "records are taken as they lie in memory");
        Add(list.size());
        return AddBytes(list.data(), list.size() * sizeof(Record));
    }
    Digest& Add(const QString& text) { return Add(text.toUtf8()); }
    Digest& Add(const std::string& text) { return Add(QByteArray::fromStdString(text)); }
    Digest& Add(const QByteArray& bytes)
    {
        Add(bytes.size());
        return AddBytes(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    }
    /// Lists, counts, volume, identity and what the finalisation provides.
    Digest& Add(const Mesh& mesh);
    /// With the pictures.
    Digest& Add(const MeshMaterialInfo& material);
    Digest& Add(const MeshTextureGroup& group);

    QByteArray Result() const { return m_hash.result(); }

private:
    Digest& AddBytes(const void* bytes, std::size_t count);

    QCryptographicHash m_hash{QCryptographicHash::Sha1};
};

} // namespace test
