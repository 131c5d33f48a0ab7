#pragma once

#include <map>
#include <vector>

#include <QString>

#include "core/common/ClearedByMove.h"
#include "core/common/OnDemand.h"
#include "core/math/Matrix4.h"
#include "core/math/TriangleFace.h"
#include "core/math/Vector2D.h"
#include "core/math/Vector3D.h"
#include "core/mesh/KRCoreMeshExport.h"

/// The smallest box, parallel to the axes, around a mesh's vertices.
struct MeshBoundingBox {
    Vector3D<float> minimum; ///< the corner of the least coordinates
    Vector3D<float> maximum; ///< the corner of the greatest coordinates
    bool isEmpty = true;     ///< no finite vertex; both corners are then (0, 0, 0)
};

/// One triangle mesh: the lists that readers fill and writers walk, with the identity data of its object.
///
/// Lengths are in the unit of the file that the mesh came from, millimetres where the format names none.
/// Indices count from 0. The face and vertex counts stand apart from the lists: writers walk GetFaceNum()
/// faces.
///
/// A mesh can be copied and moved. A mesh that was moved from is empty, with both counts 0, as after
/// Cleanup(), has no name any more, and may be filled again.
///
/// Different meshes may be used from different threads at once. Of one mesh all const operations may run at
/// once; nothing else may run beside a non-const operation.
class KRCORE_MESH_EXPORT Mesh {
public:
    /// An empty mesh with the identity transform, object id and components id -1.
    /// @param mergeDistanceMm  distance within which the first switch of PostProcess() merges vertices;
    ///     readers pass 0.03 and never set that switch
    explicit Mesh(float mergeDistanceMm);

    /// @{
    /// The lists, to be filled or read in place. The pointers stay valid as long as the mesh and are never
    /// null. Texture faces index the texture coordinates and stand beside the faces one for one; nothing
    /// checks them.
    std::vector<Vector3D<float>>* GetVerticesVecPtr() { return &m_vertices; }
    const std::vector<Vector3D<float>>* GetVerticesVecPtr() const { return &m_vertices; }
    std::vector<TriangleFace>* GetFacesVecPtr() { return &m_faces; }
    const std::vector<TriangleFace>* GetFacesVecPtr() const { return &m_faces; }
    std::vector<Vector2D<float>>* GetTexCoordVecPtr() { return &m_texCoords; }
    const std::vector<Vector2D<float>>* GetTexCoordVecPtr() const { return &m_texCoords; }
    std::vector<TriangleFace>* GetTextureFacesVecPtr() { return &m_textureFaces; }
    const std::vector<TriangleFace>* GetTextureFacesVecPtr() const { return &m_textureFaces; }
    /// @}

    /// @{
    /// The counts, as last set or as the last finalisation took them from the lists; setting them changes no
    /// list.
    void SetFaceNum(int count) { m_faceCount = count; }
    int GetFaceNum() const { return m_faceCount; }
    void SetVertexNum(int count) { m_vertexCount = count; }
    int GetVertexNum() const { return m_vertexCount; }
    /// @}

    /// Appends vertices and faces, the indices as given, and sets both counts to the lists' sizes.
    void AddVertexAndFaces(const std::vector<Vector3D<float>>& vertices,
                           const std::vector<TriangleFace>& faces);

    /// Empties the four lists, both counts, the volume and what the finalisation provided; keeps ids, name
    /// and transform.
    void Cleanup();

    /// Drops the faces with an index below 0 or not below the number of vertices; the others keep their
    /// order. Nothing else is dropped: texture faces stand beside the faces one for one.
    static void ValidateVertexAndFaces(std::vector<TriangleFace>& faces,
                                       const std::vector<Vector3D<float>>& vertices);

    /// Finalises the mesh from its lists and sets both counts to their sizes. Each switch is one step in
    /// linear time, in this order; what an earlier finalisation provided is dropped first.
    ///
    /// @param mergeVertices
    ///     merge vertices within the merge distance: in the order of the list each joins the earliest vertex
    ///     kept so far that lies no further away, or is kept itself. So no vertex moves further than the
    ///     distance, and rows of near vertices do not shrink to one. A distance that is not positive merges
    ///     equal vertices alone; a vertex that is not finite merges with none
    /// @param dropRepeatedCorners
    ///     drop the faces that name a vertex twice, and the texture faces beside them if there are as many
    ///     texture faces as faces
    /// @param provideNormals
    ///     provide face and vertex normals
    /// @param provideNeighbours
    ///     provide face neighbours
    /// @param vertexNormals
    ///     when not null and normals are provided, the vertex normals, copied now, instead of computed ones:
    ///     one pointer for each vertex as numbered before the merge, where the first of those that become one
    ///     counts; missing or null entries give (0, 0, 0)
    /// @param edgeFaceCounts
    ///     when not null, is emptied and receives for each edge, as smaller index * 2^32 + larger index, the
    ///     number of faces on it; from a vertex to itself runs no edge
    ///
    /// Faces with an index outside the vertex list are left alone by every step and count on no edge.
    void PostProcess(bool mergeVertices, bool dropRepeatedCorners, bool provideNormals,
                     bool provideNeighbours, const std::vector<Vector3D<float>*>* vertexNormals,
                     std::map<long long, int>* edgeFaceCounts);

    /// The same; @p vertexBuffer, when not null, first replaces the vertex list.
    void PostProcessFromVertexBuffer(const std::vector<Vector3D<float>>* vertexBuffer, bool mergeVertices,
                                     bool dropRepeatedCorners, bool provideNormals, bool provideNeighbours,
                                     const std::vector<Vector3D<float>*>* vertexNormals,
                                     std::map<long long, int>* edgeFaceCounts);

    /// Merges vertices with equal coordinates (-0 equals 0; a vertex that is not finite merges with none),
    /// numbers them as the vertex list first meets them and sets both counts. Drops no face and provides
    /// neither normals nor neighbours.
    void PostProcessMergeRawVertexBuffer();

    /// The signed volume enclosed by the faces, in cubed units: the divergence theorem, summed in double
    /// precision relative to the first vertex; positive when the faces wind counter-clockwise seen from
    /// outside. Faces with an index outside the vertex list or a corner that is not finite add nothing; 0 for
    /// a mesh without faces.
    // Spelling is part of the interface.
    double CalcuateVolume() const;
    /// @{
    /// The volume last stored; 0 before. Readers store what CalcuateVolume() gives.
    void SetVolume(double volume) { m_volume = volume; }
    double GetVolume() const { return m_volume; }
    /// @}

    /// Unit normals, one a face; (0, 0, 0) for a face without area. Empty unless the last finalisation was
    /// asked to provide normals. Computed at the first request after it, from the lists as they are then; any
    /// number of threads may ask at once. Finalise again after changing the lists.
    const std::vector<Vector3D<float>>& GetFaceNormals() const;
    /// Unit normals, one a vertex: the sum of its faces' normals weighted by area, normalised; (0, 0, 0) for
    /// a vertex without a face. Provided as GetFaceNormals().
    const std::vector<Vector3D<float>>& GetVertexNormals() const;
    /// For each face the three faces across its edges (v0 v1), (v1 v2), (v2 v0); -1 at a border. Edges pair
    /// in face order with the latest unpaired edge between the same vertices, so an edge of three faces pairs
    /// two of them. Empty unless the last finalisation was asked to provide neighbours; otherwise provided as
    /// GetFaceNormals(). Throws std::length_error for more than 715827882 faces.
    const std::vector<TriangleFace>& GetFaceNeighbours() const;

    /// The box around all finite vertices of the vertex list, computed anew at each call.
    MeshBoundingBox GetBoundingBox() const;

    /// @{
    /// The placement of the mesh; the lists are not moved by it.
    void SetTransformMatrix(const Matrix4<double>& transform) { m_transform = transform; }
    Matrix4<double> GetTransformMatrix() const { return m_transform; }
    /// @}

    /// @{
    /// Id of the object in its 3MF package; -1 when it has none.
    void SetObjectID(int id) { m_objectId = id; }
    int GetObjectID() const { return m_objectId; }
    /// @}

    /// @{
    /// Id of the components object that the mesh belongs to; -1 when it belongs to none.
    void SetComponentsId(int id) { m_componentsId = id; }
    int GetComponentsId() const { return m_componentsId; }
    /// @}

    /// @{
    /// Name of the object in its 3MF package or CAD file; empty when it has none.
    void SetObjectName(const QString& name) { m_objectName = name; }
    QString GetObjectName() const { return m_objectName; }
    /// @}

private:
    void TakeCounts();
    void Provide(bool normals, bool neighbours);

    std::vector<Vector3D<float>> m_vertices;
    std::vector<TriangleFace> m_faces;
    std::vector<Vector2D<float>> m_texCoords;
    std::vector<TriangleFace> m_textureFaces;
    kr::ClearedByMove<int> m_faceCount;
    kr::ClearedByMove<int> m_vertexCount;
    float m_mergeDistanceMm;
    int m_objectId = -1;
    int m_componentsId = -1;
    kr::ClearedByMove<double> m_volume;
    kr::ClearedByMove<QString> m_objectName;
    Matrix4<double> m_transform;
    kr::ClearedByMove<bool> m_providesNormals;
    kr::ClearedByMove<bool> m_providesNeighbours;
    kr::OnDemand<std::vector<Vector3D<float>>> m_faceNormals;
    kr::OnDemand<std::vector<Vector3D<float>>> m_vertexNormals;
    kr::OnDemand<std::vector<TriangleFace>> m_neighbours;
};
