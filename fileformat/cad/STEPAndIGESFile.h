#pragma once

#include <vector>

#include "fileformat/KRCoreFileFormatExport.h"

class Mesh;
class QString;

/// Reads STEP and IGES files into triangle meshes: one for each solid, shell and loose face, named and
/// placed.
///
/// OpenCASCADE reads and tessellates. Reading and transferring takes turns between threads, as OpenCASCADE
/// cannot do two at once; tessellation does not, and uses all cores. Any operation may run on several threads
/// at once for different files; a host that reads CAD files through OpenCASCADE itself must not do so
/// meanwhile. The same file gives the same meshes, to the last bit, whatever the number of threads.
///
/// Nothing is printed: OpenCASCADE's default messenger has no printers while an operation runs. Its settings
/// are as before after every call. The unit of length that a host set for it does not count; what else a host
/// changed of its settings for reading does.
///
/// OpenCASCADE and all that it needs lie in a library of their own, libKRCoreCad, beside this one, loaded at
/// the first STEP or IGES file and kept until the process ends.
class KRCORE_FILEFORMAT_EXPORT STEPAndIGESFile {
public:
    /// Reads the file @p fileName into new meshes, which become the caller's.
    ///
    /// The end of the name tells the format: .stp and .step, .igs and .iges, in any case.
    ///
    /// Each solid, shell and loose face becomes one mesh, in the order of the document, every instance of an
    /// assembly's part one of its own, moved to its place. Of a compound only its solids count. What has no
    /// triangles is left out. Lengths are in millimetres, whatever the file's unit.
    ///
    /// A mesh is named after its shape's label: "root - label", or the label alone without a root; it has no
    /// name when the label has none or the root's. Solids of a compound have "-1", "-2" … behind that name,
    /// or behind the label, or bare numbers. Names of assemblies are not used.
    ///
    /// Solids and shells: equal vertices are merged. @p deflection is the largest distance between surface
    /// and triangles, in thousandths of four times the longest side of the shape's box; @p angle the largest
    /// angle between neighbouring facets' normals on a curve, in degrees. Loose faces, which only IGES files
    /// have, differ: @p deflection is in millimetres, at least 0.0001, @p angle in radians, and vertices are
    /// not merged. Of a face that solids have in common an earlier solid's triangles stay if they are fine
    /// enough. Volumes are set; normals and neighbours are provided at their first request.
    ///
    /// Parts that a STEP file keeps in other STEP files are read from there, relative to its own folder; a
    /// file that is missing is left out.
    ///
    /// @param meshes          empty; what it holds is replaced on success
    /// @param prefixFileName  true: the root is the file's name without folder and suffixes; false: none
    /// @return false when the name ends otherwise or is empty but for suffixes, when the file cannot be read
    ///         or transferred, an IGES file's terminate record is missing or disagrees with its sections,
    ///         or STEP files name each other for their parts (@p meshes is untouched then); and when the
    ///         document holds no solid, shell or face (@p meshes is empty then). Shapes of which none yields
    ///         a triangle give true and no mesh
    /// @throws Standard_Failure and its family, of OpenCASCADE and no std::exception, as for a @p deflection
    ///         of 0 for a solid, an @p angle of 0, and some damaged IGES files; nothing is left behind
    /// @throws std::bad_alloc when memory runs out
    /// @throws std::runtime_error when the library that holds OpenCASCADE cannot be loaded; the text says
    ///         why. After any exception @p meshes is empty
    [[nodiscard]] static bool LoadFile(const QString& fileName, std::vector<Mesh*>& meshes, double deflection,
                                       double angle, bool prefixFileName);
    /// The same, with the file's name as the root.
    [[nodiscard]] static bool LoadFile(const QString& fileName, std::vector<Mesh*>& meshes, double deflection,
                                       double angle);
};
