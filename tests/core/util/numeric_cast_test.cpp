#include "nelvo/core/util/numeric_cast.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/failure_text.h"

using util::NumericCast;

namespace
{

constexpr auto kInt64Max = std::numeric_limits<std::int64_t>::max();
constexpr auto kInt64Min = std::numeric_limits<std::int64_t>::min();
constexpr auto kUint64Max = std::numeric_limits<std::uint64_t>::max();
constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kTwoTo64 = 18446744073709551616.0;

template <class Target, class Source>
bool Throws(Source value)
{
    return FailureText([&] { NumericCast<Target>(value); }) != "no failure";
}

} // namespace

TEST(NumericCast, KeepsWhatFits)
{
    EXPECT_EQ(2024, NumericCast<std::uint16_t>(2024));
    EXPECT_EQ(-128, NumericCast<std::int8_t>(-128L));
    EXPECT_EQ(127, NumericCast<std::int8_t>(127U));
    EXPECT_EQ(4294967295U, NumericCast<std::uint32_t>(std::uint64_t{4294967295}));
    EXPECT_EQ(kInt64Max, NumericCast<std::int64_t>(std::uint64_t{9223372036854775807}));
    EXPECT_EQ(kUint64Max, NumericCast<std::uint64_t>(kUint64Max));
    EXPECT_EQ(5U, NumericCast<std::uint64_t>(std::int8_t{5}));
}

TEST(NumericCast, NamesBothTypesWhenItFails)
{
    EXPECT_EQ("Unable to cast value from [m] to [j].",
              FailureText([] { NumericCast<unsigned>(4294967296UL); }));
    EXPECT_EQ("Unable to cast value from [i] to [t].",
              FailureText([] { NumericCast<std::uint16_t>(70000); }));
    EXPECT_EQ("Unable to cast value from [d] to [i].", FailureText([] { NumericCast<int>(0.5); }));
}

TEST(NumericCast, RefusesWhatIsOneTooMany)
{
    EXPECT_TRUE(Throws<std::int8_t>(128));
    EXPECT_TRUE(Throws<std::int8_t>(-129));
    EXPECT_TRUE(Throws<std::int8_t>(128U));
    EXPECT_TRUE(Throws<std::uint8_t>(256));
    EXPECT_TRUE(Throws<std::uint8_t>(256U));
    EXPECT_TRUE(Throws<std::int64_t>(std::uint64_t{1} << 63U));
}

TEST(NumericCast, RefusesNegativeValuesForUnsignedTypes)
{
    EXPECT_TRUE(Throws<std::uint8_t>(-1));
    EXPECT_TRUE(Throws<std::uint32_t>(std::int8_t{-1}));
    EXPECT_TRUE(Throws<std::uint64_t>(kInt64Min));
    EXPECT_TRUE(Throws<std::uint64_t>(-1.0));
}

TEST(NumericCast, TakesWholeFloatingPointNumbers)
{
    EXPECT_EQ(493, NumericCast<int>(493.0));
    EXPECT_EQ(0U, NumericCast<unsigned>(-0.0));
    EXPECT_EQ(-1, NumericCast<std::int8_t>(-1.0F));
    EXPECT_EQ(kInt64Min, NumericCast<std::int64_t>(-kTwoTo63));
    EXPECT_EQ(std::uint64_t{1} << 63U, NumericCast<std::uint64_t>(kTwoTo63));
    EXPECT_EQ(4294967295U, NumericCast<std::uint32_t>(4294967295.0));
}

TEST(NumericCast, RefusesFractionsAndWhatIsNoNumber)
{
    EXPECT_TRUE(Throws<int>(0.5));
    EXPECT_TRUE(Throws<int>(-0.25F));
    EXPECT_TRUE(Throws<int>(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_TRUE(Throws<int>(std::numeric_limits<double>::infinity()));
    EXPECT_TRUE(Throws<int>(-std::numeric_limits<double>::infinity()));
}

TEST(NumericCast, RefusesFloatingPointNumbersBeyondTheRange)
{
    EXPECT_TRUE(Throws<std::int8_t>(128.0));
    EXPECT_TRUE(Throws<std::uint32_t>(4294967296.0));
    EXPECT_TRUE(Throws<std::int64_t>(kTwoTo63));
    EXPECT_TRUE(Throws<std::int64_t>(-kTwoTo63 * 1.5));
    EXPECT_TRUE(Throws<std::uint64_t>(kTwoTo64));
    EXPECT_TRUE(Throws<std::int64_t>(1e300));
}

TEST(FitsInto, AnswersWithoutAFailure)
{
    EXPECT_TRUE(util::FitsInto<std::uint8_t>(255));
    EXPECT_FALSE(util::FitsInto<std::uint8_t>(256));
    EXPECT_FALSE(util::FitsInto<std::uint8_t>(1.5));
}
