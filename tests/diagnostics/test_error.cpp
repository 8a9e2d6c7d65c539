#include "ZDError.h"

#include <gtest/gtest.h>

TEST(Error, PrintableFormCarriesEverythingAndFailFillsTheOutParameter)
{
    ZDError error(226, QStringLiteral("Couldn’t load languages data"), {}, QStringLiteral("illegal value"),
                  {{QStringLiteral("JSON Length"), 12}});
    EXPECT_EQ(error.toString(),
              QStringLiteral("Couldn’t load languages data (code 226): illegal value {JSON Length: 12}"));

    ZDError out;
    EXPECT_TRUE(out.isNull());
    EXPECT_FALSE(ZDError::fail(&out, error));
    EXPECT_EQ(out.code(), 226);
    EXPECT_FALSE(ZDError::fail(nullptr, error));
}
