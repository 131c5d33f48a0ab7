#include <thread>
#include <vector>

#include "tests/common/Directory.h"
#include "tests/texture/TextureSupport.h"

namespace {

using test::Text;

/// Parameters of which none is the default one.
MeshMaterialParameters UnusualParameters()
{
    MeshMaterialParameters parameters;
    parameters.wrapS = 2;
    parameters.wrapT = 77;
    parameters.borderColor = Vector4D<float>(0.1f, 0.2f, 0.3f, 0.4f);
    parameters.matrix.translation = Vector3D<double>(1, 2, 3);
    parameters.matrix.rotation = Vector3D<double>(4, 5, 6);
    parameters.matrix.repeat = Vector3D<double>(7, 8, 9);
    for (int i = 0; i < 16; ++i)
        parameters.matrix.matrix.set(i / 4, i % 4, i + 0.5);
    return parameters;
}

QString NameFrom(const char* fileName)
{
    return test::TextureOf(test::RandomPicture(2, 2), Text(fileName)).getTextureName();
}

MeshTextureInfo InfoOfRows(const QByteArray& firstRow, const QByteArray& secondRow)
{
    MeshTextureInfo info;
    info.width = firstRow.size() / 4;
    info.height = 2;
    info.fileName = Text("rows.png");
    info.pixels = firstRow + secondRow;
    return info;
}

} // namespace

TEST(TextureFile, StartsEmpty)
{
    test::ExpectNew(TextureFile());
}

TEST(TextureFile, SupportsOneExtension)
{
    EXPECT_EQ(TextureFile::GetSupportedFileExtension(), Text("*.texture"));
}

TEST(TextureFile, ExtensionIsValidInItsExactLettersOnly)
{
    EXPECT_TRUE(TextureFile::IsValidFileExtenson(Text("texture")));
    for (const char* other : {"TEXTURE", ".texture", "*.texture", "Texture", "texture ", "textures", ""})
        EXPECT_FALSE(TextureFile::IsValidFileExtenson(Text(other))) << other;
    EXPECT_FALSE(TextureFile::IsValidFileExtenson(QString()));
}

TEST(TextureFromMesh, CopiesAllParameters)
{
    const MeshMaterialParameters parameters = UnusualParameters();
    test::ExpectSameParameters(test::TextureOf(parameters).GetParameters(), parameters);
}

TEST(TextureFromMesh, TurnsTheRowsUpright)
{
    const MeshTextureInfo info = InfoOfRows(QByteArray("\x01\x02\x03\xff\x04\x05\x06\xff", 8),
                                            QByteArray("\x07\x08\x09\xff\x0a\x0b\x0c\xff", 8));
    TextureFile texture;
    ASSERT_TRUE(texture.Load(&info, {}, test::HostNames()));
    const QImage& image = texture.GetImage();
    ASSERT_EQ(image.size(), QSize(2, 2));
    EXPECT_EQ(image.format(), QImage::Format_RGB32);
    EXPECT_EQ(image.pixel(0, 0), qRgb(9, 8, 7));
    EXPECT_EQ(image.pixel(1, 0), qRgb(12, 11, 10));
    EXPECT_EQ(image.pixel(0, 1), qRgb(3, 2, 1));
    EXPECT_EQ(image.pixel(1, 1), qRgb(6, 5, 4));
}

TEST(TextureFromMesh, KeepsAPictureOfItsOwn)
{
    MeshTextureInfo info = test::InfoOf(test::RandomPicture(3, 2), Text("a.png"));
    TextureFile texture;
    ASSERT_TRUE(texture.Load(&info, {}, test::HostNames()));
    info.pixels.fill('\0');
    EXPECT_EQ(texture.GetImage(), test::RandomPicture(3, 2));
}

TEST(TextureFromMesh, TakesPixelsAtAnyAddress)
{
    QByteArray bytes(1 + 3 * 2 * 4, '\x55');
    MeshTextureInfo info;
    info.width = 3;
    info.height = 2;
    info.pixels = QByteArray::fromRawData(bytes.constData() + 1, 24);
    TextureFile texture;
    ASSERT_TRUE(texture.Load(&info, {}, test::HostNames()));
    EXPECT_EQ(texture.GetImage().pixel(2, 1), 0xff555555);
}

TEST(TextureFromMesh, IsNamedAfterTheFile)
{
    EXPECT_EQ(NameFrom("/pictures.d/oak.old.png"), Text("oak.old"));
    EXPECT_EQ(NameFrom("oak"), Text("oak"));
    EXPECT_EQ(NameFrom("  dark oak  .png"), Text("dark oak"));
    EXPECT_EQ(NameFrom("\xE6\x9C\xA8.png"), Text("\xE6\x9C\xA8"));
}

TEST(TextureFromMesh, WithoutANameIsUntitled)
{
    for (const char* fileName : {"", "   ", ".png", "   .png", "/pictures/", "\t\n.png"})
        EXPECT_EQ(NameFrom(fileName), Text("untitled")) << fileName;
}

TEST(TextureFromMesh, IdentifierIsThePublishedExampleOfItsKind)
{
    // RFC 9562, appendix A.4: version 5, namespace of host names.
    EXPECT_EQ(test::TextureOf(test::RandomPicture(2, 2), Text("www.example.com.png")).GetPatternID(),
              Text("2ed6657d-e927-568b-95e1-2665a8aea6a2"));
}

TEST(TextureFromMesh, IdentifierFollowsTheNamespace)
{
    TextureFile texture = test::TextureOf(test::RandomPicture(2, 2), Text("www.example.com.png"));
    texture.initPatternID(QUuid());
    const QString elsewhere = texture.GetPatternID();
    EXPECT_NE(elsewhere, Text("2ed6657d-e927-568b-95e1-2665a8aea6a2"));
    EXPECT_EQ(elsewhere.size(), 36);
    texture.initPatternID(test::HostNames());
    EXPECT_EQ(texture.GetPatternID(), Text("2ed6657d-e927-568b-95e1-2665a8aea6a2"));
}

TEST(TextureFromMesh, OfAnUntitledPictureIsIdentifiedByThatName)
{
    EXPECT_EQ(test::TextureOf(test::RandomPicture(2, 2), QString()).GetPatternID(),
              QUuid::createUuidV5(test::HostNames(), Text("untitled")).toString(QUuid::WithoutBraces));
}

TEST(TextureFromMesh, FailureChangesNothing)
{
    TextureFile texture = test::TextureOf(UnusualParameters());
    const QByteArray before = test::SavedBytes(texture);
    EXPECT_FALSE(texture.Load(nullptr, {}, QUuid()));
    MeshTextureInfo invalid = test::InfoOf(test::RandomPicture(5, 4), Text("elm.png"));
    invalid.width = 6;
    EXPECT_FALSE(texture.Load(&invalid, {}, QUuid()));
    const MeshTextureInfo empty;
    EXPECT_FALSE(texture.Load(&empty, {}, QUuid()));
    EXPECT_EQ(test::SavedBytes(texture), before);
    test::ExpectSameParameters(texture.GetParameters(), UnusualParameters());
}

TEST(TextureFromMesh, ReplacesWhatWasThere)
{
    const MeshTextureInfo info = test::InfoOf(test::RandomPicture(5, 4), Text("elm.png"));
    TextureFile texture = test::TextureOf(UnusualParameters());
    ASSERT_TRUE(texture.Load(&info, {}, test::HostNames()));
    EXPECT_EQ(test::SavedBytes(texture),
              test::SavedBytes(test::TextureOf(test::RandomPicture(5, 4), Text("elm.png"))));
}

TEST(TextureToMesh, GivesBackPictureAndName)
{
    const QImage image = test::RandomPicture(5, 3);
    MeshTextureInfo info = test::InfoOf(test::RandomPicture(9, 9), Text("old.png"));
    ASSERT_TRUE(test::TextureOf(image, Text("a/oak.png")).getTextureInfo(info, 0));
    EXPECT_EQ(info.width, 5);
    EXPECT_EQ(info.height, 3);
    EXPECT_EQ(info.fileName, Text("oak"));
    EXPECT_EQ(info.pixels, test::InfoOf(image, QString()).pixels);
}

TEST(TextureToMesh, WithoutPictureEmptiesTheInfoButForItsName)
{
    MeshTextureInfo info = test::InfoOf(test::RandomPicture(9, 9), Text("old.png"));
    EXPECT_FALSE(TextureFile().getTextureInfo(info, 0));
    EXPECT_EQ(info.fileName, Text("untitled"));
    EXPECT_EQ(info.width, 0);
    EXPECT_EQ(info.height, 0);
    EXPECT_TRUE(info.pixels.isEmpty());
}

TEST(TextureToMesh, ScalesDownToTheLongestSide)
{
    const TextureFile texture = test::TextureOf(test::RandomPicture(40, 20));
    MeshTextureInfo info;
    ASSERT_TRUE(texture.getTextureInfo(info, 10));
    EXPECT_EQ(info.width, 10);
    EXPECT_EQ(info.height, 5);
    ASSERT_TRUE(texture.getTextureInfo(info, -1));
    EXPECT_EQ(info.width, 40);
    EXPECT_EQ(texture.GetImage().width(), 40) << "the texture keeps its pixels";
}

TEST(TextureFile, ResetGivesANewObject)
{
    TextureFile texture = test::TextureOf(UnusualParameters());
    texture.Reset();
    test::ExpectNew(texture);
}

TEST(TextureFile, CanBeCopied)
{
    TextureFile texture = test::TextureOf(test::RandomPicture(4, 4), Text("oak.png"), UnusualParameters());
    const TextureFile copy = texture;
    texture.Reset();
    EXPECT_EQ(copy.GetImage(), test::RandomPicture(4, 4));
    EXPECT_EQ(copy.getTextureName(), Text("oak"));
    test::ExpectSameParameters(copy.GetParameters(), UnusualParameters());
}

TEST(TextureFileThreads, SaveAndLoadDifferentTexturesAtOnce)
{
    const test::Directory directory;
    // Qt loads its picture plug-ins at their first use, and they belong to that thread for good, which would
    // look like a leak once the thread is gone.
    TextureFile first;
    ASSERT_TRUE(
        test::TextureOf(test::RandomPicture(2, 2, 9)).SaveFile(directory.Path(QStringLiteral("first"))));
    ASSERT_TRUE(first.LoadFile(directory.Path(QStringLiteral("first"))));
    std::vector<std::thread> threads;
    for (unsigned number = 0; number < 4; ++number) {
        threads.emplace_back([&directory, number] {
            const QString path = directory.Path(QString::number(number));
            const QImage image = test::RandomPicture(30, 20, number);
            for (int round = 0; round < 10; ++round) {
                TextureFile texture;
                EXPECT_TRUE(test::TextureOf(image).SaveFile(path));
                EXPECT_TRUE(texture.LoadFile(path));
                EXPECT_EQ(texture.GetImage(), image);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}
