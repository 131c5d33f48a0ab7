#include <gtest/gtest.h>

#include <QFile>

#include <sys/stat.h>

#include "tests/common/Directory.h"
#include "tests/common/OrdinaryUser.h"
#include "tests/reliability/Formats.h"

// Reading what nobody may read.

namespace {

using namespace test;

class ReadFailure : public testing::TestWithParam<Reader> {};

INSTANTIATE_TEST_SUITE_P(EveryReader, ReadFailure, testing::ValuesIn(AllReaders()), NameOfFormat());

} // namespace

TEST_P(ReadFailure, OfAFileWithoutPermissionIsThatOfAMissingOne)
{
    const Directory directory;
    const QString file = QString::fromLatin1(GetParam().fileName);
    const QString path = directory.Path(file);
    GetParam().writeSample(path);
    const QByteArray whole = GetParam().read(path);
    const QByteArray missing = GetParam().read(directory.Path(QStringLiteral("missing-") + file));
    ASSERT_NE(whole, missing);
    ASSERT_EQ(chmod(QFile::encodeName(directory.Path(QString())).constData(), 0755), 0);
    ASSERT_EQ(chmod(QFile::encodeName(path).constData(), 0), 0);
    const OrdinaryUser user;
    EXPECT_EQ(GetParam().read(path), missing);
}
