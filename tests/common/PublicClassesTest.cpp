#include <type_traits>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "core/mesh/MeshMaterialInfo.h"
#include "core/mesh/MeshMaterialParameters.h"
#include "core/mesh/MeshTextureGroup.h"
#include "core/mesh/MeshTextureInfo.h"
#include "core/utility/ImageTool.h"
#include "core/utility/Utility.h"
#include "fileformat/3mf/Model3MF.h"
#include "fileformat/cad/STEPAndIGESFile.h"
#include "fileformat/image/ImageFile.h"
#include "fileformat/obj/OBJFile.h"
#include "fileformat/path/DXFPathFile.h"
#include "fileformat/stl/STLFile.h"
#include "fileformat/texture/TextureFile.h"

namespace {

template<class... Classes>
constexpr bool kAnyIsPolymorphic = (std::is_polymorphic_v<Classes> || ...);

} // namespace

// A virtual operation would put a pointer in front of every record's fields.
TEST(PublicClasses, HaveNoVirtualOperations)
{
    EXPECT_FALSE((kAnyIsPolymorphic<STLFile, OBJFile, Model3MF, STEPAndIGESFile, ImageFile, TextureFile,
                                    DXFPathFile, Utility, ImageTool, Mesh>));
    EXPECT_FALSE((kAnyIsPolymorphic<Model3MF::ModelObjectInfo, Model3MF::BaseMaterial, Model3MF::Texture,
                                    Model3MF::TextureGroup, MeshTextureInfo, MeshMaterialInfo,
                                    MeshTextureGroup, MeshMaterialParameters, MeshMaterialMatrix>));
}

TEST(PublicClasses, OfPackagesAndTexturesAreValues)
{
    EXPECT_TRUE(std::is_copy_constructible_v<Model3MF> && std::is_copy_assignable_v<Model3MF>);
    EXPECT_TRUE(std::is_copy_constructible_v<TextureFile> && std::is_copy_assignable_v<TextureFile>);
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<Mesh> && std::is_nothrow_move_assignable_v<Mesh>);
}
