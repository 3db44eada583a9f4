#include "nelvo/fs/convert_base.h"

#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/thrown.h"

using util::ConvertBase;

TEST(ConvertBase, ModeBecomesItsOctalDigits)
{
    EXPECT_EQ(755u, ConvertBase(0755, 8, 10));
    EXPECT_EQ(7777u, ConvertBase(07777, 8, 10));
    EXPECT_EQ(4u, ConvertBase(4, 8, 10));
}

TEST(ConvertBase, DigitsBecomeAMode)
{
    EXPECT_EQ(0755u, ConvertBase(755, 10, 8));
    EXPECT_EQ(04750u, ConvertBase(4750, 10, 8));
}

TEST(ConvertBase, ZeroIsZero)
{
    EXPECT_EQ(0u, ConvertBase(0, 8, 10));
    EXPECT_EQ(0u, ConvertBase(0, 10, 8));
}

TEST(ConvertBase, DigitBeyondTheTargetBaseCounts)
{
    EXPECT_EQ(521u, ConvertBase(789, 10, 8));
    EXPECT_EQ(9u, ConvertBase(9, 10, 8));
}

TEST(ConvertBase, SumMayBeLargerThanEachProduct)
{
    EXPECT_EQ(4777777777u, ConvertBase(671088639, 8, 10));
    EXPECT_EQ(4294967295u, ConvertBase(0xFFFFFFFF, 16, 16));
}

TEST(ConvertBase, ProductBeyond32BitsIsRefused)
{
    EXPECT_EQ("Unable to cast value from [d] to [j].",
              Thrown<exc::runtime_exc_t>([] { ConvertBase(671088640, 8, 10); }));
    EXPECT_EQ("Unable to cast value from [d] to [j].",
              Thrown<exc::runtime_exc_t>([] { ConvertBase(0xFFFFFFFF, 2, 0xFFFFFFFF); }));
}
