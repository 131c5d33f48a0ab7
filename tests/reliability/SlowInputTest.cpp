#include <gtest/gtest.h>

#include <string>

#include "tests/common/Directory.h"
#include "tests/reliability/Formats.h"
#include "tests/reliability/SlowInputs.h"

// Files that ask for much work, small here, so that the sanitizers see them too. How long large ones take
// tells the program SlowInputs.

namespace {

using namespace test;

constexpr int kSize = 20000;

class SlowInputOf : public testing::TestWithParam<SlowInput> {};

INSTANTIATE_TEST_SUITE_P(EveryReader, SlowInputOf, testing::ValuesIn(SlowInputs()), NameOfFormat());

} // namespace

TEST_P(SlowInputOf, IsReadTheSameTwice)
{
    const Directory directory;
    const QString path = directory.Write(GetParam().make(kSize), QString::fromLatin1(GetParam().fileName));
    const QByteArray first = GetParam().read(path);
    EXPECT_EQ(!first.isEmpty(), GetParam().isRead);
    EXPECT_EQ(GetParam().read(path), first);
}
