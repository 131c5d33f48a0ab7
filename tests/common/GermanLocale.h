#pragma once

#include <clocale>

#include <gtest/gtest.h>

#include "tests/common/MadeLocales.h"

namespace test {

/// The C library writes numbers with a comma as long as this lives.
class GermanLocale {
public:
    GermanLocale()
    {
        EXPECT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
        EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    }
    ~GermanLocale() { std::setlocale(LC_ALL, "C"); }
    GermanLocale(const GermanLocale&) = delete;
    GermanLocale& operator=(const GermanLocale&) = delete;

private:
    MadeLocales m_locales{{"de_DE.UTF-8"}};
};

} // namespace test
