#include "nelvo/core/time_span.h"

#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/thrown.h"

using datetime::CTimeSpan;

namespace
{

constexpr char kAll[] = "%d %H:%M:%S";

std::string TextOf(std::int64_t seconds) { return CTimeSpan(seconds).ToString(kAll); }

} // namespace

TEST(TimeSpan, IsZeroByDefault)
{
    EXPECT_EQ(0, CTimeSpan().GetSeconds());
    EXPECT_EQ("0 00:00:00", CTimeSpan().ToString(kAll));
}

TEST(TimeSpan, FieldsCountUpToTheNextLargerOne)
{
    EXPECT_EQ("0 00:00:59", TextOf(59));
    EXPECT_EQ("0 00:01:00", TextOf(60));
    EXPECT_EQ("0 00:59:59", TextOf(3599));
    EXPECT_EQ("0 01:00:00", TextOf(3600));
    EXPECT_EQ("0 23:59:59", TextOf(86399));
    EXPECT_EQ("1 00:00:00", TextOf(86400));
    EXPECT_EQ("1 02:03:04", TextOf(93784));
    EXPECT_EQ("106751991167300 15:30:07", TextOf(std::numeric_limits<std::int64_t>::max()));
}

TEST(TimeSpan, FieldsOfANegativeSpanAreThoseOfTheOppositeOne)
{
    const datetime::time_span_fields_t fields = CTimeSpan(-93784).GetFields();
    EXPECT_TRUE(fields.is_negative);
    EXPECT_EQ(1u, fields.days);
    EXPECT_EQ(2, fields.hours);
    EXPECT_EQ(3, fields.minutes);
    EXPECT_EQ(4, fields.seconds);
    EXPECT_FALSE(CTimeSpan(93784).GetFields().is_negative);
    EXPECT_EQ(-93784, CTimeSpan(-93784).GetSeconds());
}

TEST(TimeSpan, TextOfANegativeSpanBeginsWithAMinus)
{
    EXPECT_EQ("-0 00:00:01", TextOf(-1));
    EXPECT_EQ("-106751991167300 15:30:08", TextOf(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ("-in 05 s", CTimeSpan(-5).ToString("in %S s"));
}

TEST(TimeSpan, TextIsTheFormatWithItsConversionsReplaced)
{
    EXPECT_EQ("04 4 1 days, 100%", CTimeSpan(93784).ToString("%S 4 %d days, 100%%"));
    EXPECT_EQ("%d", CTimeSpan(93784).ToString("%%d"));
    EXPECT_EQ("none", CTimeSpan(93784).ToString("none"));
}

TEST(TimeSpan, FormatThatIsNoneIsAFailure)
{
    for (const std::string format : {"", "%", "%d %", "%x", "%D", "%d % H", "%d%%%"})
        EXPECT_EQ("Failed convert TimeSpan to string using format [" + format + "].",
                  Thrown<exc::runtime_exc_t>([&] { CTimeSpan(-1).ToString(format); }));
}
