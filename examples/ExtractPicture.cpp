// Tells how a texture is laid on a surface, and takes its picture out: ExtractPicture FILE.texture OUT.png
#include <cstdio>

#include "fileformat/texture/TextureFile.h"

int main(int argc, char** argv)
{
    TextureFile texture;
    if (argc != 3 || !texture.LoadFile(QString::fromUtf8(argv[1]))) {
        std::fputs("ExtractPicture FILE.texture OUT.png: no picture can be read\n", stderr);
        return 1;
    }
    const MeshMaterialMatrix& matrix = texture.GetParameters().matrix;
    std::printf("%s: %d x %d pixels, %g x %g in a unit, turned by %g degrees\n",
                qUtf8Printable(texture.getTextureName()), texture.GetImage().width(),
                texture.GetImage().height(), matrix.repeat.x, matrix.repeat.y, matrix.rotation.z);
    return texture.GetImage().save(QString::fromUtf8(argv[2])) ? 0 : 1;
}
