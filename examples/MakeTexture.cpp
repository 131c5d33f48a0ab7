// Makes a texture file that tiles a surface with a picture: MakeTexture PICTURE TILES OUT.texture
#include <cstdio>

#include <QImage>
#include <QUuid>

#include "core/mesh/MeshTextureInfo.h"
#include "core/utility/Utility.h"
#include "fileformat/image/ImageFile.h"
#include "fileformat/texture/TextureFile.h"

int main(int argc, char** argv)
{
    const double tiles = Utility::ConvertBufferToDouble(argc == 4 ? argv[2] : nullptr);
    QImage image;
    if (!(tiles > 0) || ImageFile::CheckImageAndParse(QString::fromUtf8(argv[1]), image) != 0) {
        std::fputs("MakeTexture PICTURE TILES OUT.texture: a picture, and how often it is repeated\n",
                   stderr);
        return 1;
    }
    MeshTextureInfo info;
    info.fileName = QString::fromUtf8(argv[1]); // gives the texture its name
    constexpr int kLongestSide = 1024;
    if (!info.load(image, false, false, false, kLongestSide)) {
        std::fprintf(stderr, "%s is too large\n", argv[1]);
        return 1;
    }
    MeshMaterialParameters parameters;
    parameters.wrapS = parameters.wrapT = MeshMaterialParameters::Mirror;
    parameters.matrix.repeat = {tiles, tiles, 1};
    parameters.matrix.updateMatrix();
    TextureFile texture;
    // Equal names in one name space give equal identifiers.
    const QUuid nameSpace(QStringLiteral("{a2b5f9c4-3a53-4f0e-9d25-5bb0d7f6c1e8}"));
    return texture.Load(&info, parameters, nameSpace) && texture.SaveFile(QString::fromUtf8(argv[3])) ? 0 : 1;
}
