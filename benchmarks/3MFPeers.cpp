#include "benchmarks/Peers.h"

#include <memory>

#include <QFile>

#include "core/mesh/Mesh.h"
#include "fileformat/3mf/Model3MF.h"

#ifdef HAVE_LIB3MF
#include <Model/COM/NMR_DLLInterfaces.h>
#endif

namespace peers {

namespace {

/// A package's meshes, which it hands over.
class Package {
public:
    bool Load(const QString& path)
    {
        Model3MF package;
        const bool isLoaded = package.LoadFile(path);
        for (Mesh* const mesh : package.GetObjects())
            m_meshes.emplace_back(mesh);
        return isLoaded;
    }

    bool Save(const QString& path) const
    {
        std::vector<Model3MF::ModelObjectInfo> objects(m_meshes.size());
        for (std::size_t i = 0; i < objects.size(); ++i)
            objects[i].mesh = m_meshes[i].get();
        return Model3MF().SaveFile(path, objects, {0, 0, 0});
    }

    long VertexCount() const
    {
        long count = 0;
        for (const std::unique_ptr<Mesh>& mesh : m_meshes)
            count += mesh->GetVertexNum();
        return count;
    }

private:
    std::vector<std::unique_ptr<Mesh>> m_meshes;
};

Outcome LoadHere(const QString& path)
{
    return Measure([&] {
        Package package;
        return package.Load(path) ? package.VertexCount() : -1;
    });
}

Outcome SaveHere(const QString& path)
{
    Package package;
    if (!package.Load(path))
        return {};
    return Measure([&] { return package.Save(OutputOf(path)) ? 1L : -1L; });
}

#ifdef HAVE_LIB3MF
struct Release {
    void operator()(NMR::PLib3MFBase* object) const { NMR::lib3mf_release(object); }
};
using Owned = std::unique_ptr<NMR::PLib3MFBase, Release>;

// Null when `make` fails.
template<class Make>
Owned Made(Make make)
{
    NMR::PLib3MFBase* object = nullptr;
    return Owned(make(&object) == LIB3MF_OK ? object : nullptr);
}

Owned LoadByLib3MF(const QString& path)
{
    Owned model = Made(NMR::lib3mf_createmodel);
    if (!model)
        return nullptr;
    const Owned reader =
        Made([&](auto** made) { return NMR::lib3mf_model_queryreader(model.get(), "3mf", made); });
    const QByteArray name = QFile::encodeName(path);
    const bool isRead =
        reader && NMR::lib3mf_reader_readfromfileutf8(reader.get(), name.constData()) == LIB3MF_OK;
    return isRead ? std::move(model) : nullptr;
}

long VertexCount(NMR::PLib3MFModel* model)
{
    const Owned meshes = Made([&](auto** made) { return NMR::lib3mf_model_getmeshobjects(model, made); });
    long count = 0;
    BOOL isThere = 0;
    while (meshes && NMR::lib3mf_resourceiterator_movenext(meshes.get(), &isThere) == LIB3MF_OK && isThere) {
        const Owned mesh =
            Made([&](auto** made) { return NMR::lib3mf_resourceiterator_getcurrent(meshes.get(), made); });
        DWORD vertexCount = 0;
        if (!mesh || NMR::lib3mf_meshobject_getvertexcount(mesh.get(), &vertexCount) != LIB3MF_OK)
            return -1;
        count += long(vertexCount);
    }
    return count;
}

Outcome LoadWithLib3MF(const QString& path)
{
    return Measure([&] {
        const Owned model = LoadByLib3MF(path);
        return model ? VertexCount(model.get()) : -1;
    });
}

Outcome SaveWithLib3MF(const QString& path)
{
    const Owned model = LoadByLib3MF(path);
    if (!model)
        return {};
    const QByteArray name = QFile::encodeName(OutputOf(path));
    return Measure([&] {
        const Owned writer =
            Made([&](auto** made) { return NMR::lib3mf_model_querywriter(model.get(), "3mf", made); });
        return writer && NMR::lib3mf_writer_writetofileutf8(writer.get(), name.constData()) == LIB3MF_OK
                   ? 1L
                   : -1L;
    });
}
#endif

} // namespace

std::vector<Entry> ThreeMFEntries()
{
    return {
        {Job::Load3MF, "this library", LoadHere},
        {Job::Save3MF, "this library", SaveHere},
#ifdef HAVE_LIB3MF
        {Job::Load3MF, "lib3mf", LoadWithLib3MF},
        {Job::Save3MF, "lib3mf", SaveWithLib3MF},
#endif
    };
}

} // namespace peers
