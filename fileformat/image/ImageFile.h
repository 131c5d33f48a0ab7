#pragma once

#include "fileformat/KRCoreFileFormatExport.h"

class Mesh;
class QImage;
class QString;

/// Makes reliefs from pictures: closed solids whose top is a field of heights taken from the picture's grey
/// levels, above a flat bottom at z = 0. Keeps nothing between calls: any operation may run on several
/// threads at once for different meshes and images.
///
/// Pictures are JPEG, PNG, BMP, TGA and TIFF, with any kind of pixels: 1 bit, palettes, grey, colour, 16 bits
/// a channel, CMYK. They are read by Qt's picture plug-ins, which tell a file by its content; what else these
/// know is read too. TGA and TIFF need the plug-ins of Debian's package qt5-image-formats-plugins where the
/// program runs. Of TGA, these read files with the footer of version 2.0 alone, and such a file begins with
/// no mark of its own, so it needs its suffix. Transparency is dropped, a transparent pixel counts with its
/// colour; notes in the file about orientation and colour space are not looked at. Plug-ins print what they
/// think of a damaged picture to the standard error output.
///
/// A picture has at most 536,870,912 (2^29) pixels: the faces of a larger one could not be counted in 31
/// bits. Where a format tells the size ahead of the pixels, it is judged before anything is decoded. Of a
/// file that is cut short ImageTool::ReadPicture() tells what it shows.
class KRCORE_FILEFORMAT_EXPORT ImageFile {
public:
    /// "*.jpg *.jpeg *.png *.bmp *.tga *.tiff", as file dialogs take it.
    static QString GetSupportedFileExtension();

    /// Whether @p suffix, without a dot, is one of these. Case matters: "JPG" is refused.
    // Spelling is part of the interface.
    static bool IsValidFileExtenson(const QString& suffix);

    /// Loads the picture @p fileName into @p image, as QImage::Format_RGB32.
    /// @param image  emptied first; stays empty on failure
    /// @return 0 loaded
    ///         1 no file that can be read, by Utility::TestFileReadable()
    ///         2 no picture that Qt can load, no plain file (but a pipe or a device), or too many pixels
    ///         3 loaded, but empty
    ///         4 empty after conversion: rows of more bytes than an int counts, or no memory
    [[nodiscard]] static int CheckImageAndParse(const QString& fileName, QImage& image);

    /// Makes a relief from the picture @p fileName in @p mesh: blurs the picture, then scales it down, then
    /// takes grey levels (see ImageTool).
    ///
    /// Each pixel is a vertex of the top. The first row of pixels lies at y = sizeY, the last one at y = 0,
    /// the first column at x = 0, the last one at x = sizeX, all of this moved by (sizeX / 2, sizeY / 2, 0).
    /// The bottom has a vertex under each of the top, at z = 0:
    ///
    ///     top: w * h vertices, row by row      bottom: the border, once around from x = 0, y = 0 along
    ///         0 --- 1 --- 2                        y = 0, x = sizeX, y = sizeY, x = 0; then the inside, row
    ///         |   / |   / |                        by row
    ///         | /   | /   |                            6 --- 5 --- 4
    ///         3 --- 4 --- 5                            | \   | \   |
    ///                                                  |   \ |   \ |
    ///                                                  0 --- 1 --- 2   + w * h
    ///
    /// Faces come in the order top, bottom, sides y = 0, x = sizeX, y = sizeY, x = 0; they look outwards as
    /// long as both sizes are positive and no height is negative. Sizes and heights are taken as they are,
    /// also when they are not.
    ///
    /// On success the mesh's lists, counts, volume and what its finalisation provides are replaced, texture
    /// lists emptied; ids, name and transform stay. On failure, and when an exception passes, the mesh is as
    /// it was. Normals are provided at their first request, neighbours are not.
    /// @param sizeX         extent along x, the picture's width, in millimetres as all lengths here
    /// @param sizeY         extent along y, the picture's height
    /// @param blurRadius    in pixels; 0 or less: no blur
    /// @param brightIsHigh  true: white is high; false: black is high
    /// @param minHeight     z of the top at the low end of the 256 levels, whether or not the picture has
    /// them
    /// @param maxHeight     z at the high end; may be less than minHeight
    /// @param scalePercent  below 100 the picture is scaled down, smoothly, to the largest size of its own
    ///                      proportions within width * scalePercent / 100 and height * scalePercent / 100,
    ///                      both rounded down; from 100 on it is used as it is
    /// @return false when CheckImageAndParse() fails, or the picture has less than 2 pixels a side, before or
    ///         after scaling; a scalePercent of 0 or less leaves none
    /// @throws std::bad_alloc when memory runs out. The result takes 72 bytes a pixel, the work no more than
    ///         the picture beside it
    [[nodiscard]] static bool LoadFile(const QString& fileName, Mesh& mesh, float sizeX, float sizeY,
                                       int blurRadius, bool brightIsHigh, float minHeight, float maxHeight,
                                       int scalePercent);
};
