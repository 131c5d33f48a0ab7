#pragma once

#include "core/utility/KRCoreUtilityExport.h"

#include <functional>
#include <optional>

#include <QImage>
#include <QSize>

class QByteArray;
class QIODevice;
class QString;

/// Operations on pictures in memory. Nothing is kept between calls: different images may be worked on by
/// several threads at once. A null image stays null. When there is no memory for its result, an image becomes
/// null or std::bad_alloc passes through.
class KRCORE_UTILITY_EXPORT ImageTool {
public:
    /// Chooses for a picture of a size, QSize() for one whose format does not tell it ahead of the pixels,
    /// the size to decode it to: the same for all of its pixels, another to have it scaled smoothly, nothing
    /// to refuse it.
    using SizeChoice = std::function<std::optional<QSize>(const QSize& size)>;

    /// Reads a picture of any format that Qt's plug-ins know. They tell it by its content, and by the suffix
    /// too if @p device is a QFile; formats that scale while they decode, as JPEG does, take less time for
    /// less pixels.
    ///
    /// A few hundred bytes of file may ask for gigabytes of pixels: @p choose judges the size before any
    /// memory is taken for them. Rows from the top, which BMP files tell by a negative height, do not show in
    /// it. An icon has the size of the PNG file that is its first picture, not that of its directory. When
    /// the size decoded turns out to be neither announced nor chosen, @p choose is asked once more, and what
    /// it refuses is dropped.
    ///
    /// Of a file that is cut short some formats give what is there; what lacks is grey in JPEG, otherwise
    /// black or the first colour of the palette, never what the memory held before. A bitmap in an icon whose
    /// palette claims 2^31 colours or more, of which Qt would set a part, is damaged. Left to chance is the
    /// colour of fully transparent pixels of a damaged GIF.
    /// @param device  random-access, at the begin of the file; opened if it is not yet. It is left anywhere.
    ///     One that may be written to is refused: Qt's plug-ins seek to where a file sends them, and a
    ///     QBuffer becomes as large then, gigabytes
    /// @param image   replaced by the picture, its pixels in the format that the plug-in gives; null on
    ///     failure and, with success, when the plug-in gives a picture without pixels
    /// @param choose  may throw; that passes through, @p image null
    /// @return false when it is no picture, damaged or refused
    [[nodiscard]] static bool ReadPicture(QIODevice& device, QImage& image, const SizeChoice& choose);

    /// Turns @p image into grey levels: QImage::Format_RGB32 whose red, green and blue are all qGray() of the
    /// pixel, (11 red + 16 green + 5 blue) / 32 rounded down. Transparency is dropped, a transparent pixel
    /// counts with its colour.
    static void ConvertToGrayScaleImage(QImage& image);

    /// Blurs @p image with a triangular kernel, first along the rows, then along the columns: a pixel at the
    /// distance i has the weight radius + 1 - |i|, and beyond the border the border's pixel counts. Each of
    /// the two means is rounded to the nearest level, halves up. Time is linear in the pixels, whatever the
    /// radius.
    ///
    /// RGB32, ARGB32 and ARGB32_Premultiplied keep their format; others become RGB32, or ARGB32_Premultiplied
    /// if they have transparency. Colours are weighted by their opacity, so that what is transparent does not
    /// show.
    /// @param radius  in pixels; 0 or less does nothing, above 268,435,455 it counts as that
    static void StackBlur(QImage& image, int radius);

    /// Makes @p image opaque, as textures are: QImage::Format_RGB32, what is transparent laid on white.
    /// Opaque pixels keep their colour exactly.
    static void ConvertToTextureImageAndFixBackground(QImage& image);

    /// Encodes @p width x @p height raw pixels as an image file into @p out, which is emptied first and
    /// stays empty on failure.
    /// @param in             rows from the top, tightly packed; what follows the last row is ignored. May be
    /// @p out
    /// @param format         any format of whole bytes a pixel but QImage::Format_Indexed8, whose colours are
    /// not here
    /// @param bytesPerPixel  must be the size of a pixel of @p format
    /// @param fileFormat     name of the file's format as QImageWriter knows it, "PNG" for example
    /// @return false for an empty picture, too few bytes in @p in, or formats that do not fit or cannot be
    /// written
    static bool ConvertToPNGImageBuffer(QByteArray& out, const QByteArray& in, int width, int height,
                                        QImage::Format format, int bytesPerPixel, QString fileFormat);
};
