#pragma once

#include <vector>

#include "core/mesh/MeshMaterialInfo.h"
#include "core/mesh/MeshTextureGroup.h"
#include "fileformat/KRCoreFileFormatExport.h"

class Mesh;
class QString;
class QTextStream;

/// Reads Wavefront OBJ files and their material libraries (MTL), and writes OBJ files. Keeps nothing between
/// calls: any operation may run on several threads at once for different files, meshes and lists.
///
/// Both readers are tolerant: what is no statement they know is passed over, what is no number reads as 0,
/// and only a file that cannot be opened is a failure. Pipes and devices cannot be opened, plain files only.
///
/// Lines, of OBJ and MTL alike. A line ends at a line feed or a NUL; carriage returns are lost wherever they
/// stand. A backslash at the end of a line, blanks behind it allowed as all but visible ASCII is, joins the
/// next line on. The backslash itself is dropped, but for one case: in front of a visible ASCII character
/// (0x21 to 0x7E) one backslash is kept, however many there were, so "wood\oak.png" stays what it is, and so
/// does a joined line that begins without a blank: continuation lines are meant to be indented. A joined line
/// of more than 1,048,575 bytes ends the reading as the end of the file does. Bytes are UTF-8; a byte-order
/// mark at the beginning of a line is dropped. A line whose first character is '#' is a comment. The blank
/// alone separates words; a tab does not. Keywords are told by their exact letters.
class KRCORE_FILEFORMAT_EXPORT OBJFile {
public:
    /// Reads the OBJ file @p fileName into @p mesh, with a group for each "usemtl".
    ///
    /// | statement, words in all | taken as |
    /// |---|---|
    /// | v x y z, 4 or more | a vertex; with just five words divided by the fifth, w, if \|w\| > 1e-6 |
    /// | vt u v, 3 or more | a texture coordinate, v as it stands |
    /// | f corner corner corner ..., 4 or more | a polygon, as a fan of triangles around its first corner |
    /// | usemtl name, 2 | a new group, also for a name that was there before |
    /// | mtllib name, 2 | the library in the OBJ file's directory; the last one counts |
    ///
    /// A corner is a vertex, vertex/texture, vertex/texture/normal or vertex//normal. Indices count from 1 in
    /// the file and from 0 in the mesh; nothing but 1 is subtracted, so relative (negative) ones stay
    /// negative (the lowest int stays itself). The texture parts of a polygon with three or more of them make
    /// texture faces, also when some corners have none. A corner's part that is no number makes index -1.
    ///
    /// Faces with an index outside the vertex list are dropped then. Texture faces are not checked at all:
    /// whoever indexes the texture coordinates with them has to. Normals are not read.
    ///
    /// A group's range counts triangles as they were read, before any was dropped: those of polygons with
    /// texture faces in the list of texture faces, others in the list of faces. Its first triangle is where
    /// the list stood; its count sums up both kinds. Faces before the first "usemtl" belong to no group. A
    /// group's material is the first of its name in the library; without one it is a default material with
    /// that name.
    ///
    /// The mesh's lists, counts, volume and what its finalisation provides are replaced; ids, name and
    /// transform stay.
    ///
    /// @param textureGroups          replaced, also on failure (emptied)
    /// @param clearPostProcessFlags  true: the mesh provides no normals and no neighbours; false: both at
    ///                               their first request
    /// @param textureLoadOption      the longest side in pixels to which pictures are scaled down, 0 or less
    ///                               keeps them as they are
    /// @return false when the file cannot be opened: the mesh is then as it was. A file without a statement,
    ///         an empty one too, gives true and an empty mesh
    /// @throws std::bad_alloc when memory runs out, with the mesh empty; memory grows with the file's bytes,
    ///         and a list ends the reading before it passes 2,147,483,647 entries
    [[nodiscard]] static bool LoadFile(const QString& fileName, Mesh& mesh,
                                       std::vector<MeshTextureGroup>& textureGroups,
                                       bool clearPostProcessFlags, int textureLoadOption);

    /// Reads the material library @p fileName, a record for each "newmtl", names repeated too.
    ///
    /// | statement | words in all | sets |
    /// |---|---|---|
    /// | newmtl name | 2 | the name of a new material; what follows is about it |
    /// | Ns, Ni, d, illum | 2 | specularExponent, refractionIndex, opacity, illum |
    /// | Ka, Kd, Ks, Ke r g b | 4 | ambient, diffuse, specular, emissive colour |
    /// | map_Kd, map_Ke, map_d | 2 or more | diffuseTexture, emissiveTexture, opacityTexture |
    /// | map_Bump or bump | 2 or more | bumpTexture |
    ///
    /// White space of any kind around a line is dropped; within it only blanks separate. The last statement
    /// of a kind counts. Pictures are loaded by MeshTextureInfo::load() with the whole statement and the
    /// library's directory; a picture that several statements name is decoded once and its pixels are shared.
    /// A picture that cannot be loaded changes nothing else.
    ///
    /// @param materials          replaced, also on failure (emptied)
    /// @param textureLoadOption  as in LoadFile()
    /// @return false when the file cannot be opened
    /// @throws std::bad_alloc when memory runs out
    [[nodiscard]] static bool LoadMTLFile(const QString& fileName, std::vector<MeshMaterialInfo>& materials,
                                          int textureLoadOption);

    /// @{
    /// Writes @p meshes into the OBJ file @p fileName as one group "Mesh1", replacing it. Vertices are
    /// written as the mesh holds them, without its transform, with six fixed decimals. Only what faces
    /// use is written, once each, in the order in which they first use it, so the numbers in the file are
    /// not those of the mesh. A mesh that is listed twice is written twice; a face count below 0 counts
    /// as 0. No material library is written.
    ///
    /// @param textureFlags  one a mesh: write its texture coordinates, if it has as many texture faces as
    ///                      faces; otherwise it is written without. A missing flag counts as false, further
    ///                      ones are ignored
    /// @param withNormals   write the unit normal of each face, (0, 0, 0) for one without area
    /// @return false when the file cannot be opened for writing. Write errors are not reported
    /// @throws std::out_of_range for an index outside its list or a face count beyond the face list; the file
    ///         then holds the lines that come before it. std::bad_alloc when memory runs out: a save takes 4
    ///         bytes for each vertex and each texture coordinate of the meshes
    [[nodiscard]] static bool SaveFile(const QString& fileName, const std::vector<const Mesh*>& meshes,
                                       const std::vector<bool>& textureFlags, bool withNormals);
    [[nodiscard]] static bool SaveFile(const QString& fileName, const std::vector<Mesh*>& meshes,
                                       const std::vector<bool>& textureFlags, bool withNormals);
    /// @}

    /// The same for one mesh, with its flag.
    [[nodiscard]] static bool SaveFile(const QString& fileName, const Mesh& mesh, bool textured,
                                       bool withNormals);

    /// Writes the body of such a file, from the first "v" line on, where @p stream stands. Coordinates take
    /// the stream's own notation and precision; indices are decimal whatever the stream's settings.
    /// Exceptions as SaveFile().
    static void writeMesh(QTextStream& stream, const std::vector<const Mesh*>& meshes,
                          const std::vector<bool>& textureFlags, bool withNormals);
};
