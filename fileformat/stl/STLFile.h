#pragma once

#include <vector>

#include <QtGlobal>

#include "core/math/TriangleFace.h"
#include "core/math/Vector3D.h"
#include "fileformat/KRCoreFileFormatExport.h"

class Mesh;
class QByteArray;
class QFile;
class QString;
class QTextStream;

/// Reads and writes STL files, text and binary. Keeps nothing between calls: any operation may run on several
/// threads at once for different files and meshes.
class KRCORE_FILEFORMAT_EXPORT STLFile {
public:
    /// Reads the STL file @p fileName, text or binary, into @p mesh as one stitched mesh (see
    /// StitchTriangleSoup).
    ///
    /// A file that begins with "solid" in any case, or in which the word turns up as skipWhiteSpace() finds
    /// it, is read as text; without three corners in it, it is read as binary after all. In text only
    /// "normal" and "vertex", each followed by three numbers, and "endsolid" matter; every other word is
    /// skipped, and all solids make one mesh. In binary the facet count must agree with the file's size; the
    /// last of several records may lack its attribute word, and up to 49 surplus bytes, 48 excepted, are
    /// passed over. Colours and attribute words are not kept.
    ///
    /// On success the mesh's lists, counts, volume and what its finalisation provides are replaced, texture
    /// lists emptied; ids, name and transform stay. On failure, and when an exception passes, the mesh is as
    /// it was. No face names a vertex twice; normals and neighbours are provided at their first request.
    /// @param lightPostProcess  true: the mesh provides no normals and no neighbours
    /// @param headerSize        bytes before the facet count of a binary file, 80 in ordinary files; below 0
    ///                          or above 1024 a binary file is refused
    /// @param forceBinary       read as binary without looking
    /// @return false when the file cannot be read, is no plain file (but a pipe or a device), is cut short,
    ///         holds no facet, or more than 715,827,882 of them (whose corners have no numbers in 31 bits)
    /// @throws std::out_of_range for a text file with fewer "normal" statements than facets
    /// @throws std::bad_alloc when memory runs out; it grows with the file's bytes, never with a count alone
    [[nodiscard]] static bool LoadFile(const QString& fileName, Mesh& mesh, bool lightPostProcess,
                                       int headerSize, bool forceBinary);

    /// Stitches a triangle soup into an indexed mesh: joins facets along common edges, exactly and then
    /// within a tolerance, winds them alike and outwards, and gives each fan of facets around a corner one
    /// vertex.
    ///
    /// 1. A facet with two corners of the same bits is removed; the last facet takes its place.
    /// 2. Edges that are equal as numbers are linked, in facet order, each with the latest unlinked one.
    /// 3. What is left is linked within a tolerance, at first the smallest edge extent E of the soup, then E
    ///    and a 10,000th of the box's diagonal: ends in one cell of that size coincide, and the earlier
    ///    facets take the later facet's position. Last, edges whose ends differ by less than E on each axis
    ///    are linked across the cells' borders. An edge whose ends coincide takes no part.
    /// 4. Each connected piece takes the winding of its first facet; all facets are turned if the volume is
    ///    negative. A flip swaps corners 0 and 1.
    /// 5. Vertices are numbered in the order in which the facets first meet them.
    /// Time and memory are linear in the number of facets.
    ///
    /// @param corners   three a facet; a remainder is ignored. Fewer than three: nothing is done
    /// @param normals   one a facet, as read; on return each is the geometric unit normal to within 0.001 a
    ///                  component, (0, 0, 0) for a facet without area. One entry is dropped from its end for
    ///                  each facet removed, entries beyond the facets stay
    /// @param faces     replaced
    /// @param vertices  replaced
    /// @throws std::out_of_range when fewer normals than facets remain, with `faces` and `vertices`
    ///         untouched and `normals` partly rewritten
    /// @throws std::length_error for more than 715,827,882 facets, with nothing touched
    static void StitchTriangleSoup(const std::vector<Vector3D<float>>& corners,
                                   std::vector<Vector3D<float>>& normals, std::vector<TriangleFace>& faces,
                                   std::vector<Vector3D<float>>& vertices);

    /// Searches onward from the file's position for the word "solid" in any case, byte by byte. White space
    /// empties the probe; any other byte is appended to it, and the probe keeps its latest @p probeSize
    /// bytes. The search gives up after more than 10,240 bytes that are not white space (blank, tab, line
    /// feed, vertical tab, form feed, carriage return).
    /// @param probe  bytes before the position, then the latest bytes read: the word itself when found
    /// @return 1 found, the file stands behind it; 2 end of file or of the search; 0 a read failed
    static int skipWhiteSpace(QFile& file, QByteArray& probe, int probeSize);

    /// Reads the next token, a longest run of A-Z a-z 0-9 - . + , and the byte behind it, which is lost.
    /// @param buffer      is filled with zeros, then with the token; empty when there is none before the end
    ///                    of the file. A longer run is read whole and kept up to bufferSize - 1 characters
    /// @param bufferSize  bytes of the buffer; nothing is read or written when it is below 1
    static void getNextToken(QFile& file, char* buffer, int bufferSize);

    /// @{
    /// Writes @p meshes into the STL file @p fileName, replacing it: text with a solid "model" for each
    /// mesh, or binary with one header, one count and all facets in order. Vertices are written as the
    /// mesh holds them, without its transform; normals follow the corners' winding and are (0, 0, 0) for
    /// a facet without area. A face count below 0 counts as 0.
    /// @param ascii       text with six fixed decimals, or binary
    /// @param headerSize  bytes of the binary header, 80 in ordinary files: "STL EXPORTED BY LOFTMAREN. "
    ///                    with date and time, cut off or followed by zeros; below 0 counts as 0
    /// @return false when the file cannot be opened for writing. Write errors are not reported
    /// @throws std::out_of_range for a face index outside the vertex list or a face count beyond the face
    ///         list; the file then holds the facets before it
    [[nodiscard]] static bool SaveFile(const QString& fileName, const std::vector<const Mesh*>& meshes,
                                       bool ascii, int headerSize);
    [[nodiscard]] static bool SaveFile(const QString& fileName, const Mesh& mesh, bool ascii, int headerSize);
    [[nodiscard]] static bool SaveFile(const QString& fileName, const std::vector<Mesh*>& meshes, bool ascii,
                                       int headerSize);
    /// @}

    /// The same for a triangle soup, three corners a facet; an incomplete last triple is left out.
    [[nodiscard]] static bool SaveFile(const QString& fileName, const std::vector<Vector3D<float>>& corners,
                                       bool ascii, int headerSize);

    /// @{
    /// Write the facets of one mesh, or one facet, where the stream or file stands; numbers in text take the
    /// stream's own notation and precision. Exceptions as SaveFile.
    /// @return true
    static bool WriteMeshAscii(QTextStream& stream, const Mesh& mesh);
    static bool WriteFaceAscii(QTextStream& stream, const Vector3D<float>& a, const Vector3D<float>& b,
                               const Vector3D<float>& c);
    static bool WriteMeshBinary(QFile& file, const Mesh& mesh);
    static bool WriteFaceBinary(QFile& file, const Vector3D<float>& a, const Vector3D<float>& b,
                                const Vector3D<float>& c, quint16 attribute);
    /// @}
};
