#include <gtest/gtest.h>

#include <vector>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "core/mesh/Mesh.h"
#include "core/mesh/MeshTextureGroup.h"
#include "fileformat/obj/OBJFile.h"
#include "tests/common/Directory.h"
#include "tests/common/PictureFiles.h"
#include "tests/reliability/Formats.h"
#include "tests/reliability/StoppedClock.h"

// Whatever a file system takes for a name is one.

namespace {

using namespace test;

constexpr const char* kNames[] = {
    "\xc3\xa4rger \xc3\xa9t\xc3\xa9",               // accents
    "e\xcc\x81t\xc3\xa9",                           // one letter of two code points
    "\xe6\xa8\xa1\xe5\x9e\x8b",                     // Chinese
    "\xe3\x83\xa2\xe3\x83\x87\xe3\x83\xab",         // Japanese
    "\xd9\x86\xd9\x85\xd9\x88\xd8\xb0\xd8\xac",     // Arabic, from the right
    "\xf0\x9f\xa6\x8a\xf0\x9f\x8f\xb3\xef\xb8\x8f", // beyond the first 65,536 code points
    " two  blanks ",
    "'single' and \"double\"",
    "100% %1 %s %n %2$s",
    "#1",
    "-rf",
    "--help",
    "line\nfeed",
    "tab\tstop",
    "back\\slash",
    "semicolon;&|$(ls)`ls`*?[a]{b}",
    "many.dots..in.it",
    ".hidden",
    "~",
    "file:",
    "C:",
};

QStringList NamesOf(const char* fileName)
{
    const QString suffix = QLatin1Char('.') + QFileInfo(QString::fromLatin1(fileName)).suffix();
    QStringList names;
    for (const char* const name : kNames)
        names << QString::fromUtf8(name) + suffix;
    // The longest: 255 bytes.
    names << QString(255 - suffix.size(), QLatin1Char('n')) + suffix;
    names << QString::fromUtf8("\xc3\xb6").repeated((255 - suffix.size()) / 2) + suffix;
    return names;
}

class NameOfInput : public testing::TestWithParam<Reader> {
protected:
    void SetUp() override
    {
        GetParam().writeSample(m_path);
        m_expected = GetParam().read(m_path);
        ASSERT_FALSE(m_expected.isEmpty());
    }

    /// Nothing for a CAD file that is refused: its parts are named after it, and it has no name before the
    /// dot.
    QByteArray Expected(const QString& name) const
    {
        const bool isRefused = GetParam().work == Work::OpenCascade && name.startsWith(QLatin1Char('.'));
        return isRefused ? QByteArray() : m_expected;
    }

    Directory m_directory;
    QString m_path = m_directory.Path(QString::fromLatin1(GetParam().fileName));
    QByteArray m_expected;
};

class NameOfOutput : public testing::TestWithParam<Writer> {
protected:
    QString Path(const QString& name) const { return m_directory.Path(name); }

    StoppedClock m_clock;
    Directory m_directory;
};

INSTANTIATE_TEST_SUITE_P(EveryReader, NameOfInput, testing::ValuesIn(AllReaders()), NameOfFormat());
INSTANTIATE_TEST_SUITE_P(EveryWriter, NameOfOutput, testing::ValuesIn(Writers()), NameOfFormat());

} // namespace

TEST_P(NameOfInput, MayBeAnyThatAFileCanHave)
{
    for (const QString& name : NamesOf(GetParam().fileName)) {
        const QString path = m_directory.Path(name);
        ASSERT_TRUE(QFile::rename(m_path, path)) << name.toStdString();
        EXPECT_EQ(GetParam().read(path), Expected(name)) << name.toStdString();
        ASSERT_TRUE(QFile::rename(path, m_path));
    }
}

TEST_P(NameOfInput, MayBeOfADirectoryOfAnyName)
{
    for (const char* const name : kNames) {
        const QString directory = m_directory.Path(QString::fromUtf8(name));
        ASSERT_TRUE(QDir().mkdir(directory));
        const QString path = directory + QLatin1Char('/') + QString::fromLatin1(GetParam().fileName);
        GetParam().writeSample(path);
        EXPECT_EQ(GetParam().read(path), m_expected) << name;
    }
}

TEST_P(NameOfInput, MayBeALink)
{
    const QString link =
        m_directory.Path(QStringLiteral("link to ") + QString::fromLatin1(GetParam().fileName));
    ASSERT_TRUE(QFile::link(m_path, link));
    EXPECT_EQ(GetParam().read(link), m_expected);
}

TEST_P(NameOfInput, MayBeRelative)
{
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(QFileInfo(m_path).path()));
    EXPECT_EQ(GetParam().read(QString::fromLatin1(GetParam().fileName)), m_expected);
    QDir::setCurrent(before);
}

// What a statement cannot say: a line feed ends it, a backslash separates directories, blanks in a row are
// one.
TEST(NamesInFiles, LibrariesAndPicturesMayBeNamedInAnyWayThatAStatementCanSay)
{
    for (const char* const name : kNames) {
        SCOPED_TRACE(name);
        const QByteArray stem = QByteArray(name).simplified();
        if (stem.contains('\n') || stem.contains('\\'))
            continue;
        const Directory directory;
        const QString picture = directory.Write(Encoded(RandomPicture(3, 2), "PNG"),
                                                QString::fromUtf8(stem) + QStringLiteral(".png"));
        // The name of a library has no blank in it.
        const QByteArray library = QByteArray(stem).replace(' ', '_') + ".mtl";
        directory.Write("newmtl oak\nmap_Kd " + stem + ".png\n", QString::fromUtf8(library));
        const QString model = directory.Write("mtllib " + library + "\nusemtl oak\nv 0 0 0\nf 1 1 1\n",
                                              QStringLiteral("model.obj"));
        Mesh mesh(0.03f);
        std::vector<MeshTextureGroup> groups;
        ASSERT_TRUE(OBJFile::LoadFile(model, mesh, groups, false, 0));
        ASSERT_EQ(groups.size(), 1U);
        EXPECT_EQ(groups[0].material.diffuseTexture.width, 3);
        EXPECT_EQ(groups[0].material.diffuseTexture.fileName, picture);
    }
}

TEST_P(NameOfOutput, MayBeAnyThatAFileCanHave)
{
    const QString plain = Path(QString::fromLatin1(GetParam().fileName));
    ASSERT_TRUE(GetParam().write(plain));
    const QByteArray expected = Directory::Read(plain);
    ASSERT_FALSE(expected.isEmpty());
    for (const QString& name : NamesOf(GetParam().fileName)) {
        EXPECT_TRUE(GetParam().write(Path(name))) << name.toStdString();
        EXPECT_EQ(Directory::Read(Path(name)), expected) << name.toStdString();
    }
}

TEST_P(NameOfOutput, MayBeALinkWhichStaysOne)
{
    const QString target = Path(QString::fromLatin1(GetParam().fileName));
    ASSERT_TRUE(GetParam().write(target));
    const QByteArray expected = Directory::Read(target);
    ASSERT_TRUE(QFile::resize(target, 0));
    const QString link = Path(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(target, link));
    EXPECT_TRUE(GetParam().write(link));
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_EQ(Directory::Read(target), expected);
}
