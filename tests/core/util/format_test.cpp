#include "nelvo/core/util/format.h"

#include <gtest/gtest.h>

TEST(Format, ArgumentsStandInAnyOrder) { EXPECT_EQ("b a", util::Format("%2 %1", "a", "b")); }
TEST(Format, PercentAtTheEndStays) { EXPECT_EQ("100%", util::Format("100%", "a")); }
TEST(Format, ReferenceBeyondTheArgumentsStaysVisible) { EXPECT_EQ("%3", util::Format("%3", "a")); }
TEST(Format, TextFromAnArgumentIsNotScannedAgain) { EXPECT_EQ("%1", util::Format("%1", "%1")); }
