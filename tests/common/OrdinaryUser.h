#pragma once

#include <unistd.h>

#include <gtest/gtest.h>

namespace test {

/// As long as this lives, the process may do what an ordinary user may: root may read and write anything.
class OrdinaryUser {
public:
    OrdinaryUser()
    {
        if (geteuid() == 0) {
            EXPECT_EQ(seteuid(kNobody), 0);
        }
    }
    ~OrdinaryUser()
    {
        if (getuid() == 0) {
            EXPECT_EQ(seteuid(0), 0);
        }
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    static constexpr uid_t kNobody = 65534;
};

} // namespace test
