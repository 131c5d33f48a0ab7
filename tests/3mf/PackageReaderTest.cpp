#include <thread>

#include <QDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include "tests/3mf/PackageSupport.h"

namespace {

using test::ContentTypes;
using test::kContentTypesName;
using test::kModelName;
using test::kThumbnailName;
using test::ModelPart;
using test::ObjectIds;
using test::OwnedPackage;
using test::UsualPackage;
using test::ZipBuilder;
using test::ZipEntry;
using testing::ElementsAre;
using testing::IsEmpty;

// Content types that name the model by its part, as some programs write them.
QByteArray OverridingContentTypes()
{
    return R"(<Types><Override PartName="/3D/3dmodel.model" )"
           R"(ContentType="application/vnd.ms-package.3dmanufacturing-3dmodel+xml"/></Types>)";
}

QByteArray ContentTypesFor(const QByteArray& extension)
{
    return ContentTypes().replace("\"model\"", '"' + extension + '"');
}

void ExpectNothing(const OwnedPackage& package)
{
    EXPECT_THAT(package.GetObjects(), IsEmpty());
    EXPECT_TRUE(package.GetModelExtension().isNull());
    EXPECT_TRUE(package.Image().isEmpty());
}

} // namespace

TEST(PackageReader, LoadsModelAndKeepsThumbnail)
{
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(UsualPackage()
                                      .Add("_rels/.rels", "<Relationships/>")
                                      .Add(kModelName, ModelPart())
                                      .Add(kThumbnailName, "picture")
                                      .Bytes()));
    EXPECT_EQ(package.GetModelExtension(), QStringLiteral("model"));
    EXPECT_EQ(package.GetRelsExtension(), QStringLiteral("rels"));
    EXPECT_EQ(package.GetUnit(), QStringLiteral("inch"));
    EXPECT_EQ(package.ImageName(), QStringLiteral("Metadata/thumbnail.png"));
    EXPECT_EQ(package.Image(), QByteArray("picture"));
    ASSERT_THAT(ObjectIds(package), ElementsAre(1));
    const Mesh& mesh = *package.GetObjects().front();
    ASSERT_EQ(mesh.GetVertexNum(), 3);
    EXPECT_EQ((*mesh.GetVerticesVecPtr())[2].y, 2.5f);
    EXPECT_EQ(mesh.GetFaceNum(), 1);
}

TEST(PackageReader, KeepsLastImageInOrderOfArchive)
{
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(
        UsualPackage().Add("Metadata/z.png", "first").Add("Metadata/a.jpg", "second").Bytes()));
    EXPECT_EQ(package.ImageName(), QStringLiteral("Metadata/a.jpg"));
    EXPECT_EQ(package.Image(), QByteArray("second"));
}

TEST(PackageReader, KeepsImagesOfThreeSuffixesOnly)
{
    for (const char* const kept :
         {"Metadata/x.png", "Metadata/x.jpg", "Metadata/sub/x.jpeg", "Metadata/.png"}) {
        OwnedPackage package;
        ASSERT_TRUE(package.LoadBytes(UsualPackage().Add(kept, "picture").Bytes()));
        EXPECT_EQ(package.ImageName(), QString::fromLatin1(kept));
    }
    for (const char* const dropped : {"Metadata/x.PNG", "Metadata/x.gif", "Metadata/x.png.txt"}) {
        OwnedPackage package;
        ASSERT_TRUE(package.LoadBytes(UsualPackage().Add(dropped, "picture").Bytes()));
        EXPECT_TRUE(package.Image().isEmpty()) << dropped;
    }
}

TEST(PackageReader, KeepsImagesOfMetadataOnly)
{
    for (const char* const dropped : {"metadata/x.png", "3D/Textures/a.png", "x.png", "a/Metadata/x.png"}) {
        OwnedPackage package;
        ASSERT_TRUE(package.LoadBytes(UsualPackage().Add(dropped, "picture").Bytes()));
        EXPECT_TRUE(package.Image().isEmpty()) << dropped;
        EXPECT_EQ(package.ImageName(), QStringLiteral("Metadata/thumbnail.png"));
        EXPECT_TRUE(package.GetTextureImages().isEmpty());
    }
}

TEST(PackageReader, TakesEveryEntryForModelWithoutContentTypes)
{
    const ZipBuilder withoutTypes = ZipBuilder().Add("a.xml", ModelPart(1)).Add("b", ModelPart(2));
    OwnedPackage package;
    EXPECT_TRUE(package.LoadBytes(withoutTypes.Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(1, 2));
    EXPECT_TRUE(package.GetModelExtension().isNull());

    OwnedPackage withImage;
    EXPECT_FALSE(withImage.LoadBytes(ZipBuilder(withoutTypes).Add(kThumbnailName, "picture").Bytes()));
    EXPECT_THAT(ObjectIds(withImage), ElementsAre(1, 2));
    EXPECT_TRUE(withImage.Image().isEmpty());
}

TEST(PackageReader, TakesEveryEntryForModelWhenOverrideNamesModel)
{
    const ZipBuilder overriding = ZipBuilder()
                                      .Add(kContentTypesName, OverridingContentTypes())
                                      .Add("_rels/.rels", ModelPart(7))
                                      .Add(kModelName, ModelPart(8));
    OwnedPackage package;
    EXPECT_TRUE(package.LoadBytes(overriding.Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(7, 8));
    EXPECT_TRUE(package.GetModelExtension().isEmpty());

    OwnedPackage withImage;
    EXPECT_FALSE(withImage.LoadBytes(ZipBuilder(overriding).Add(kThumbnailName, "picture").Bytes()));
}

TEST(PackageReader, ReadsModelPartsWithoutLookingIntoRelationships)
{
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(UsualPackage()
                                      .Add("_rels/.rels", "no XML <<<")
                                      .Add("3D/part2.model", ModelPart(2))
                                      .Add("part1.model", ModelPart(1))
                                      .Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(2, 1));
}

TEST(PackageReader, ComparesLettersOfExtensionOnly)
{
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(UsualPackage()
                                      .Add("a.supermodel", ModelPart(1))
                                      .Add("model", ModelPart(2))
                                      .Add("b.MODEL", ModelPart(3))
                                      .Add("c.model.txt", ModelPart(4))
                                      .Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(1, 2));
}

TEST(PackageReader, TakesImageForModelWhenItsNameEndsWithExtension)
{
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(ZipBuilder()
                                      .Add(kContentTypesName, ContentTypesFor("png"))
                                      .Add(kThumbnailName, ModelPart(5))
                                      .Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(5));
    EXPECT_TRUE(package.Image().isEmpty());
}

TEST(PackageReader, ReadsContentTypesWhereverTheyStand)
{
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(ZipBuilder()
                                      .Add("a.part", ModelPart(1))
                                      .Add("a/b[Content_Types].xml", ContentTypesFor("part"))
                                      .Bytes()));
    EXPECT_EQ(package.GetModelExtension(), QStringLiteral("part"));
    EXPECT_THAT(ObjectIds(package), ElementsAre(1));
}

TEST(PackageReader, ReadsContentTypesOfExactNameOnly)
{
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(UsualPackage()
                                      .Add("[content_types].xml", ContentTypesFor("part"))
                                      .Add("[Content_Types].xml.bak", ContentTypesFor("part"))
                                      .Bytes()));
    EXPECT_EQ(package.GetModelExtension(), QStringLiteral("model"));
}

TEST(PackageReader, LastContentTypesCount)
{
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(UsualPackage()
                                      .Add("3D/[Content_Types].xml", ContentTypesFor("part"))
                                      .Add("z/[Content_Types].xml", "<Types/>")
                                      .Add("a.model", ModelPart(1))
                                      .Add("a.part", ModelPart(2))
                                      .Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(2));
}

TEST(PackageReader, TakesContentTypesThemselvesForModelWhenEveryNameEndsWithExtension)
{
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(
        ZipBuilder()
            .Add(kContentTypesName, OverridingContentTypes().replace("</Types>", "<object id='9'/></Types>"))
            .Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(9));
}

TEST(PackageReader, FailsOnMalformedContentTypesBeforeAnyModel)
{
    OwnedPackage package;
    EXPECT_FALSE(package.LoadBytes(ZipBuilder()
                                       .Add(kModelName, ModelPart())
                                       .Add(kContentTypesName, ContentTypes())
                                       .Add("z[Content_Types].xml", "<Types>")
                                       .Add(kThumbnailName, "picture")
                                       .Bytes()));
    EXPECT_EQ(package.GetModelExtension(), QStringLiteral("model"));
    EXPECT_THAT(package.GetObjects(), IsEmpty());
    EXPECT_TRUE(package.Image().isEmpty());
}

TEST(PackageReader, StopsWhenAllPartsTogetherKeepTheReaderBusy)
{
    QByteArray defaults;
    for (int i = 0; i < 2'000; ++i)
        defaults += "<!ATTLIST b c" + QByteArray::number(i) + " CDATA '1'>";
    const QByteArray busy = "<!DOCTYPE model [" + defaults + "]><model><object id='1'/>" +
                            QByteArray("<b/>").repeated(300) + "</model>";
    OwnedPackage one;
    EXPECT_TRUE(one.LoadBytes(UsualPackage().Add("a.model", busy).Bytes()));
    EXPECT_EQ(ObjectIds(one).size(), 1U);
    OwnedPackage two;
    EXPECT_FALSE(two.LoadBytes(UsualPackage().Add("a.model", busy).Add("b.model", busy).Bytes()));
    EXPECT_EQ(ObjectIds(two).size(), 2U);
}

TEST(PackageReader, StopsAtMalformedModelAndKeepsWhatCameBefore)
{
    OwnedPackage package;
    EXPECT_FALSE(package.LoadBytes(UsualPackage()
                                       .Add("Metadata/before.png", "before")
                                       .Add("1.model", ModelPart(1))
                                       .Add("2.model", ModelPart(2).replace("</model>", ""))
                                       .Add("3.model", ModelPart(3))
                                       .Add("Metadata/behind.png", "behind")
                                       .Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(1, 2));
    EXPECT_EQ(package.ImageName(), QStringLiteral("Metadata/before.png"));
    EXPECT_EQ(package.Image(), QByteArray("before"));
}

TEST(PackageReader, ReadsFirstOfSameNamedEntriesForEach)
{
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(UsualPackage()
                                      .Add(kModelName, ModelPart(1))
                                      .Add(kThumbnailName, "first")
                                      .Add(kModelName, ModelPart(2))
                                      .Add(kThumbnailName, "second")
                                      .Add(kContentTypesName, ContentTypesFor("part"))
                                      .Bytes()));
    EXPECT_EQ(package.GetModelExtension(), QStringLiteral("model"));
    EXPECT_THAT(ObjectIds(package), ElementsAre(1, 1));
    EXPECT_EQ(package.Image(), QByteArray("first"));
}

TEST(PackageReader, PassesOverEntriesThatCannotBeOpened)
{
    ZipEntry types{kContentTypesName, "<"};
    ZipEntry model{"1.model", "<"};
    ZipEntry image{"Metadata/z.png", "lost"};
    for (ZipEntry* const entry : {&types, &model, &image})
        entry->signature = 0;
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(ZipBuilder()
                                      .Add(types)
                                      .Add("a[Content_Types].xml", ContentTypes())
                                      .Add(model)
                                      .Add("2.model", ModelPart(2))
                                      .Add("Metadata/a.png", "kept")
                                      .Add(image)
                                      .Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(2));
    EXPECT_EQ(package.ImageName(), QStringLiteral("Metadata/a.png"));
    EXPECT_EQ(package.Image(), QByteArray("kept"));
}

TEST(PackageReader, PassesOverDirectories)
{
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(
        UsualPackage().Add("3D/", "").Add("Metadata/", "").Add(kModelName, ModelPart()).Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(1));
    OwnedPackage withoutTypes;
    EXPECT_FALSE(withoutTypes.LoadBytes(ZipBuilder().Add("3D/", "").Bytes()))
        << "an empty document is no XML";
}

TEST(PackageReader, FailsOnEmptyModelPart)
{
    OwnedPackage package;
    EXPECT_FALSE(package.LoadBytes(UsualPackage().Add(kModelName, "").Bytes()));
}

TEST(PackageReader, KeepsEmptyImage)
{
    OwnedPackage package;
    ASSERT_TRUE(
        package.LoadBytes(UsualPackage().Add("Metadata/a.png", "full").Add("Metadata/b.png", "").Bytes()));
    EXPECT_EQ(package.ImageName(), QStringLiteral("Metadata/b.png"));
    EXPECT_TRUE(package.Image().isEmpty());
}

TEST(PackageReader, ReadsStoredEntries)
{
    ZipEntry model{kModelName, ModelPart(), 0};
    ZipEntry image{kThumbnailName, "picture", 0};
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(UsualPackage().Add(model).Add(image).Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(1));
    EXPECT_EQ(package.Image(), QByteArray("picture"));
}

TEST(PackageReader, ReadsEntryWhateverItsCheckSumIs)
{
    ZipEntry model{kModelName, ModelPart()};
    model.checkSum = 1;
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(UsualPackage().Add(model).Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(1));
}

TEST(PackageReader, CutsEntryAtItsDeclaredSize)
{
    ZipEntry model{kModelName, ModelPart() + "<<< no XML"};
    model.inflatedSize = static_cast<quint32>(ModelPart().size());
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(UsualPackage().Add(model).Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(1));
}

TEST(PackageReader, ReadsEntryThatEndsBeforeItsDeclaredSize)
{
    for (const quint32 size : {2'000u, 100'000'000u, 0x7FFF'FFFFu, 0x8000'0000u, 0xFFFF'FFFEu}) {
        ZipEntry model{kModelName, ModelPart()};
        model.inflatedSize = size;
        ZipEntry image{kThumbnailName, "picture"};
        image.inflatedSize = size;
        OwnedPackage package;
        ASSERT_TRUE(package.LoadBytes(UsualPackage().Add(model).Add(image).Bytes())) << size;
        EXPECT_THAT(ObjectIds(package), ElementsAre(1));
        EXPECT_EQ(package.Image(), QByteArray("picture"));
    }
}

TEST(PackageReader, ReadsEncryptedEntryAsItIs)
{
    ZipEntry model{kModelName, "", 0, test::kIsEncrypted};
    model.content = "encrypted, so no XML";
    OwnedPackage package;
    EXPECT_FALSE(package.LoadBytes(UsualPackage().Add(model).Bytes()));
    OwnedPackage other;
    EXPECT_TRUE(other.LoadBytes(
        UsualPackage().Add(ZipEntry{kModelName, ModelPart(), 8, test::kIsEncrypted}).Bytes()));
    EXPECT_THAT(ObjectIds(other), ElementsAre(1)) << "only said to be encrypted";
}

TEST(PackageReader, PassesOverEntriesCompressedByBzip2)
{
    // Cut short: whoever begins to read the first does not come back.
    const ZipEntry model{kModelName, "BZh9", 12};
    const ZipEntry image{"Metadata/z.png", "BZh9", 12};
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(UsualPackage()
                                      .Add(model)
                                      .Add("2.model", ModelPart(2))
                                      .Add(kThumbnailName, "picture")
                                      .Add(image)
                                      .Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(2));
    EXPECT_EQ(package.Image(), QByteArray("picture"));
}

TEST(PackageReader, ReadsOnBehindEntryWithoutName)
{
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(UsualPackage().Add("", "nameless").Add(kModelName, ModelPart()).Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(1));
}

TEST(PackageReader, PassesOverEntryWithoutNameThoughEveryNameEndsWithNoExtension)
{
    const QByteArray archive = ZipBuilder().Add("", "no XML").Add("part", ModelPart()).Bytes();
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(archive));
    EXPECT_THAT(ObjectIds(package), ElementsAre(1));
}

TEST(PackageReader, PassesOverEntriesWhoseNamesBeginWithSlash)
{
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(
        UsualPackage().Add("/3D/other.model", "no XML").Add(kModelName, ModelPart()).Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(1));
}

TEST(PackageReader, ReadsNoOtherEntryInPlaceOfOneWhoseNameBeginsWithSlash)
{
    for (const char* const name : {"/", "/a.model"}) {
        OwnedPackage package;
        ASSERT_TRUE(package.LoadBytes(ZipBuilder().Add("a.model", ModelPart()).Add(name, "no XML").Bytes()));
        EXPECT_THAT(ObjectIds(package), ElementsAre(1)) << name;
    }
}

TEST(PackageReader, ReadsArchiveWithComment)
{
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(UsualPackage().Add(kModelName, ModelPart()).Bytes("made by hand")));
    EXPECT_THAT(ObjectIds(package), ElementsAre(1));
}

TEST(PackageReader, ReadsArchiveBehindOtherBytes)
{
    OwnedPackage package;
    ASSERT_TRUE(
        package.LoadBytes(QByteArray(1000, '#') + UsualPackage().Add(kModelName, ModelPart()).Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(1));
}

TEST(PackageReader, ReadsNamesInUtf8)
{
    const QString name = QString::fromUtf8("Metadata/ö é 漢字.png");
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(
        UsualPackage().Add(ZipEntry{name.toUtf8(), "picture", 8, test::kNameIsUtf8}).Bytes()));
    EXPECT_EQ(package.ImageName(), name);
    EXPECT_EQ(package.Image(), QByteArray("picture"));
}

TEST(PackageReader, ReadsFileWithUnicodeName)
{
    const test::Directory directory;
    const QString path =
        directory.Write(UsualPackage().Add(kModelName, ModelPart()).Bytes(), QString::fromUtf8("模型 é.3mf"));
    OwnedPackage package;
    ASSERT_TRUE(package.LoadFile(path));
    EXPECT_THAT(ObjectIds(package), ElementsAre(1));
}

TEST(PackageReader, FindsNothingInMissingFile)
{
    const test::Directory directory;
    OwnedPackage package;
    EXPECT_TRUE(package.LoadFile(directory.Path(QStringLiteral("missing.3mf"))));
    EXPECT_TRUE(package.LoadFile(QString()));
    ExpectNothing(package);
}

TEST(PackageReader, FindsNothingInDirectory)
{
    OwnedPackage package;
    EXPECT_TRUE(package.LoadFile(QDir::tempPath()));
    ExpectNothing(package);
}

TEST(PackageReader, FindsNothingInFilesThatAreNoArchives)
{
    for (const QByteArray& bytes : {QByteArray(), QByteArray("PK"), ModelPart(), QByteArray(100'000, 'P')}) {
        OwnedPackage package;
        EXPECT_TRUE(package.LoadBytes(bytes));
        ExpectNothing(package);
    }
}

TEST(PackageReader, FindsNothingInEmptyArchive)
{
    OwnedPackage package;
    EXPECT_TRUE(package.LoadBytes(ZipBuilder().Bytes()));
    ExpectNothing(package);
}

TEST(PackageReader, DoesNotWaitForPipe)
{
    const test::Directory directory;
    const QString path = directory.Path(QStringLiteral("pipe"));
    ASSERT_EQ(mkfifo(path.toLocal8Bit().constData(), 0600), 0);
    OwnedPackage package;
    EXPECT_TRUE(package.LoadFile(path));
    ExpectNothing(package);
}

TEST(PackageReader, AddsToWhatAnEarlierLoadLeft)
{
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(
        UsualPackage()
            .Add("a.model",
                 ModelPart(1).replace("<resources>", "<metadata name=\"Title\">x</metadata><resources>"))
            .Add(kThumbnailName, "picture")
            .Bytes()));
    ASSERT_TRUE(package.LoadBytes(
        ZipBuilder().Add("[Content_Types].xml", "<Types/>").Add("b.model", ModelPart(2)).Bytes()));
    EXPECT_THAT(ObjectIds(package), ElementsAre(1, 2)) << "the extension is still known";
    EXPECT_EQ(package.Image(), QByteArray("picture"));
    EXPECT_EQ(package.GetDescription().value(QStringLiteral("Title")), QStringLiteral("x"));
}

TEST(PackageReader, KeepsExtensionAndColoursOfAnEarlierLoadAndReplacesItsImage)
{
    const QByteArray colours =
        "<model><basematerials id='4'><base displaycolor='a'/></basematerials></model>";
    OwnedPackage package;
    ASSERT_TRUE(
        package.LoadBytes(UsualPackage().Add("a.model", colours).Add(kThumbnailName, "first").Bytes()));
    ASSERT_TRUE(package.LoadBytes(
        ZipBuilder().Add(kContentTypesName, "<Types/>").Add("Metadata/b.png", "second").Bytes()));
    EXPECT_EQ(package.GetRelsExtension(), QStringLiteral("rels"));
    EXPECT_EQ(package.GetMaterial().id, 4);
    EXPECT_THAT(package.GetMaterial().colors, ElementsAre(QStringLiteral("a")));
    EXPECT_EQ(package.ImageName(), QStringLiteral("Metadata/b.png"));
    EXPECT_EQ(package.Image(), QByteArray("second"));
}

TEST(PackageReader, ReadsNoTextures)
{
    OwnedPackage package;
    ASSERT_TRUE(package.LoadBytes(
        UsualPackage()
            .Add(kModelName,
                 "<model><texture2d id='1' path='/3D/a.png' contenttype='image/png'/>"
                 "<texture2dgroup id='2' texid='1'><tex2coord u='0' v='0'/></texture2dgroup></model>")
            .Add("3D/a.png", "picture")
            .Bytes()));
    EXPECT_THAT(package.GetTextures(), IsEmpty());
    EXPECT_THAT(package.GetTextureGroups(), IsEmpty());
    EXPECT_TRUE(package.GetTextureImages().isEmpty());
}

TEST(PackageReader, LoadsOnSeveralThreadsAtOnce)
{
    const test::Directory directory;
    const QString path = directory.Write(UsualPackage().Add(kModelName, ModelPart()).Bytes());
    std::vector<std::size_t> counts(4);
    std::vector<std::thread> threads;
    for (std::size_t& count : counts)
        threads.emplace_back([&count, &path] {
            for (int i = 0; i < 20; ++i) {
                OwnedPackage package;
                if (package.LoadFile(path))
                    count += package.GetObjects().size();
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_THAT(counts, testing::Each(20u));
}

TEST(ContentTypes, GiveExtensionsOfModelsAndRelationships)
{
    Model3MF package;
    EXPECT_TRUE(package.GetModelExtension().isNull());
    EXPECT_TRUE(package.GetRelsExtension().isNull());
    EXPECT_TRUE(package.LoadContentType(ContentTypes()));
    EXPECT_EQ(package.GetModelExtension(), QStringLiteral("model"));
    EXPECT_EQ(package.GetRelsExtension(), QStringLiteral("rels"));
}

TEST(ContentTypes, NeedOnlyContainNameOfType)
{
    Model3MF package;
    EXPECT_TRUE(package.LoadContentType(
        "<T><Default Extension='a' ContentType='package.3dmanufacturing-3dmodel+xml; charset=x'/></T>"));
    EXPECT_EQ(package.GetModelExtension(), QStringLiteral("a"));
    EXPECT_TRUE(package.LoadContentType(
        "<T><Default Extension='b' ContentType='package.3DMANUFACTURING-3dmodel+xml'/></T>"));
    EXPECT_EQ(package.GetModelExtension(), QStringLiteral("a")) << "letters are compared exactly";
}

TEST(ContentTypes, OfRelationshipsAreToldAsThoseOfModels)
{
    Model3MF package;
    EXPECT_TRUE(
        package.LoadContentType("<T><Default Extension='a' ContentType='package.RELATIONSHIPS+xml'/></T>"));
    EXPECT_TRUE(package.GetRelsExtension().isNull()) << "letters are compared exactly";
    EXPECT_TRUE(package.LoadContentType(
        "<T><Override Extension='r' ContentType='x package.relationships+xml; charset=x'/></T>"));
    EXPECT_EQ(package.GetRelsExtension(), QStringLiteral("r"));
    EXPECT_TRUE(package.LoadContentType("<T><Default ContentType='package.relationships+xml'/></T>"));
    EXPECT_TRUE(package.GetRelsExtension().isEmpty());
    EXPECT_TRUE(package.GetModelExtension().isNull());
}

TEST(ContentTypes, AreThoseOfRelationshipsFirst)
{
    Model3MF package;
    EXPECT_TRUE(
        package.LoadContentType("<T><Default Extension='a' ContentType="
                                "'package.3dmanufacturing-3dmodel+xml package.relationships+xml'/></T>"));
    EXPECT_TRUE(package.GetModelExtension().isNull());
    EXPECT_EQ(package.GetRelsExtension(), QStringLiteral("a"));
}

TEST(ContentTypes, LastEntryCounts)
{
    Model3MF package;
    EXPECT_TRUE(package.LoadContentType(ContentTypes().replace(
        "</Types>",
        "<Default ContentType='package.3dmanufacturing-3dmodel+xml' Extension='last'/></Types>")));
    EXPECT_EQ(package.GetModelExtension(), QStringLiteral("last"));
}

TEST(ContentTypes, EmptyExtensionComesFromEntryWithoutOne)
{
    Model3MF package;
    EXPECT_TRUE(package.LoadContentType(ContentTypes()));
    EXPECT_TRUE(package.LoadContentType(OverridingContentTypes()));
    EXPECT_TRUE(package.GetModelExtension().isEmpty());
    EXPECT_EQ(package.GetRelsExtension(), QStringLiteral("rels"));
}

TEST(ContentTypes, ExtensionOfOverrideCounts)
{
    Model3MF package;
    EXPECT_TRUE(package.LoadContentType(OverridingContentTypes().replace("PartName", "Extension")));
    EXPECT_EQ(package.GetModelExtension(), QStringLiteral("/3D/3dmodel.model"));
}

TEST(ContentTypes, OtherElementsMeanNothing)
{
    Model3MF package;
    for (const char* const name : {"default", "DEFAULT", "Types", "Overrides"}) {
        const QByteArray element = QByteArray("<T><") + name +
                                   " Extension='a' ContentType='package.3dmanufacturing-3dmodel+xml'/></T>";
        EXPECT_TRUE(package.LoadContentType(element));
        EXPECT_TRUE(package.GetModelExtension().isNull()) << name;
    }
    EXPECT_TRUE(package.LoadContentType(
        "<T><Default Extension='a'/><Default ContentType='image/png' Extension='b'/></T>"));
    EXPECT_TRUE(package.GetModelExtension().isNull());
}

TEST(ContentTypes, CountUpToWhereTheyCeaseToBeXml)
{
    Model3MF package;
    EXPECT_FALSE(package.LoadContentType(ContentTypes().replace("</Types>", "")));
    EXPECT_EQ(package.GetModelExtension(), QStringLiteral("model"));
    EXPECT_FALSE(package.LoadContentType(""));
    EXPECT_FALSE(package.LoadContentType("no XML"));
}
