#pragma once

#include <QByteArray>
#include <QString>

#include "core/mesh/KRCoreMeshExport.h"

class QImage;
class QSize;
class QStringList;

/// One texture picture. Plain value; different objects may be used from different threads at once.
struct KRCORE_MESH_EXPORT MeshTextureInfo {
    int width = 0;  ///< in pixels
    int height = 0; ///< in pixels
    /// The picture's file as it was looked up, or a display name for a picture that came from elsewhere.
    QString fileName;
    /// width * height pixels of 4 bytes without gaps, the bottom row first, each as in QImage::Format_RGB32
    /// (opaque; in memory blue, green, red, 255).
    QByteArray pixels;

    /// Loads the picture that a map statement of a material library names. Everything held before is dropped.
    ///
    /// The file name is what follows the options, blanks in it included (several count as one), with or
    /// without double quotes around; a backslash separates directories as '/' does. An absolute path, with a
    /// drive letter too, is looked up as it is, any other in @p directory. What is not there is looked for by
    /// its bare file name in @p directory, where pictures mostly are that were named by a path of another
    /// machine.
    ///
    /// Options say how a picture is laid on a surface, which the picture does not know: they are passed over
    /// with their arguments. So is a word with a leading '-' that is no option, with the numbers and on or
    /// off after it. A number is an argument as long as the option takes one more and a file name remains; if
    /// that leads to no file, numbers from the last on are tried as the begin of the name, which is "2
    /// oaks.png" in "-s 2 2 oaks.png" if there is such a file and no "oaks.png".
    ///
    /// @param tokens  the statement split at blanks: keyword, options, file name
    /// @param directory  with its trailing separator, or empty
    /// @param longestSide  as in the other load()
    /// @return false when the statement has no file name, no regular file is found, or it holds no picture
    ///     of a loadable size that ImageTool::ReadPicture() reads, judged before it is decoded. The picture
    ///     is then empty, and fileName is the path of the file found, or of the first place looked at
    bool load(const QStringList& tokens, const QString& directory, int longestSide);

    /// The picture that such a statement names, as load() finds it: the path of an existing regular file.
    /// Where there is none, the first place looked at; empty when the statement has no file name.
    static QString FindFile(const QStringList& tokens, const QString& directory);

    /// Takes over @p image, transparent parts laid on white. fileName stays as it is.
    /// @param mirrorHorizontally  exchange left and right
    /// @param mirrorVertically  exchange top and bottom: the rows then run from the image's top
    /// @param swapRedAndBlue  exchange the two colours
    /// @param longestSide  a picture whose longer side has more pixels is scaled down to it, its proportions
    ///     kept; 0 or less keeps all pixels
    /// @return false, with the picture empty, for a null image and for one that is not of a loadable size
    ///     before it is scaled
    bool load(const QImage& image, bool mirrorHorizontally, bool mirrorVertically, bool swapRedAndBlue,
              int longestSide);

    /// Whether load() takes a picture of @p size: both sides are from 1 to 32768 pixels, and all together no
    /// more than 1 GiB at 4 bytes each.
    static bool IsLoadableSize(const QSize& size);

    /// Empties the picture and the file name.
    void clear();

    /// Whether both sides are 1 or more and the pixels are exactly as many as they ask for.
    bool isValidSize() const;
};
