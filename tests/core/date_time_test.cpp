#include "nelvo/core/date_time.h"

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/thrown.h"
#include "tests/support/time_zone.h"

using datetime::CDateTime;

namespace
{

constexpr char kBerlin[] = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr char kIndia[] = "IST-5:30";
constexpr char kNewYork[] = "EST5EDT,M3.2.0,M11.1.0";

constexpr std::int64_t kLeapDay = 1709251198; // 29 February 2024 23:59:58
constexpr std::int64_t kSummer = 1719835200;  // 1 July 2024 12:00:00
constexpr std::int64_t kWinter = 1705320000;  // 15 January 2024 12:00:00
constexpr std::int64_t kYear2100 = 4102444800;
constexpr std::int64_t kNoDate = 67768036191676800; // the first second that gmtime_r refuses

template <class Call>
std::string FailureOf(Call call)
{
    return Thrown<exc::runtime_exc_t>(call);
}

// "2024 2 29 23 59 58 (0 0)", with the spare fields in brackets.
std::string TextOf(const date_time_fields_t& fields)
{
    std::string text;
    for (const std::uint16_t field :
         {fields.year, fields.month, fields.day, fields.hour, fields.minute, fields.second})
        text += std::to_string(field) + ' ';
    return text + '(' + std::to_string(fields.spare) + ' ' + std::to_string(fields.spare2) + ')';
}

std::string FieldsOf(std::int64_t seconds) { return TextOf(CDateTime(seconds, true).GetFields()); }

std::string IsoText(const CDateTime& value) { return value.ToString(CDateTime::kIsoFormat); }

void ExpectValue(std::int64_t seconds, bool is_utc, const CDateTime& value)
{
    EXPECT_EQ(seconds, value.GetSeconds());
    EXPECT_EQ(is_utc, value.IsUtc());
}

// The first hour from 1970 to 2100 at which a value is not what the system says, or the end.
class every_hour_t
{
public:
    explicit every_hour_t(const char* zone) : m_zone(zone) {}

    std::int64_t FirstFault() const
    {
        std::int64_t seconds = 3600; // behind the empty date
        while (seconds < kYear2100 && IsRight(seconds))
            seconds += 3600;
        return seconds;
    }

private:
    static bool IsRight(std::int64_t seconds)
    {
        const CDateTime utc(seconds, true);
        const date_time_fields_t fields = utc.GetFields();
        std::tm system{};
        ::gmtime_r(&seconds, &system);
        if (!Same(fields, system) || CDateTime(fields).GetSeconds() != seconds)
            return false;

        const CDateTime local = utc.ToLocal();
        ::localtime_r(&seconds, &system);
        return local.GetSeconds() == seconds + system.tm_gmtoff && Same(local.GetFields(), system) &&
               ::timegm(&system) == local.GetSeconds();
    }

    static bool Same(const date_time_fields_t& fields, const std::tm& system)
    {
        return fields.year == system.tm_year + 1900 && fields.month == system.tm_mon + 1 &&
               fields.day == system.tm_mday && fields.hour == system.tm_hour &&
               fields.minute == system.tm_min && fields.second == system.tm_sec;
    }

    time_zone_t m_zone;
};

} // namespace

TEST(DateTime, IsAnEmptyUtcDateByDefault) { ExpectValue(0, true, CDateTime()); }

TEST(DateTime, KeepsSecondsAndFlag)
{
    ExpectValue(-5, false, CDateTime(-5, false));
    ExpectValue(kLeapDay, true, CDateTime(kLeapDay, true));
}

TEST(DateTime, IsCopiedByValue)
{
    const CDateTime value(kLeapDay, false);
    CDateTime copy(value);
    ExpectValue(kLeapDay, false, copy);
    copy = CDateTime(1, true);
    ExpectValue(1, true, copy);
    ExpectValue(kLeapDay, false, value);
}

TEST(DateTime, IsAVirtualTableThenSecondsThenTheFlag)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<CDateTime>);
    EXPECT_EQ(24u, sizeof(CDateTime));
    const CDateTime value(0x0102030405060708, true);
    unsigned char bytes[sizeof(CDateTime)];
    std::memcpy(bytes, static_cast<const void*>(&value), sizeof(bytes));
    EXPECT_EQ(0x08, bytes[8]);
    EXPECT_EQ(0x01, bytes[15]);
    EXPECT_EQ(1, bytes[16]);
}

TEST(DateTime, FormatsOfTheClass)
{
    EXPECT_STREQ("%Y-%m-%d %H:%M:%S", CDateTime::kIsoFormat);
    EXPECT_STREQ("%m/%d/%Y %H:%M:%S", CDateTime::kUsFormat);
}

TEST(DateTime, FieldsAreEight16BitNumbersInOrder)
{
    EXPECT_TRUE((std::is_same_v<std::uint16_t, decltype(date_time_fields_t::year)>));
    EXPECT_EQ(16u, sizeof(date_time_fields_t));
    EXPECT_EQ(0u, offsetof(date_time_fields_t, year));
    EXPECT_EQ(2u, offsetof(date_time_fields_t, month));
    EXPECT_EQ(4u, offsetof(date_time_fields_t, spare));
    EXPECT_EQ(6u, offsetof(date_time_fields_t, day));
    EXPECT_EQ(8u, offsetof(date_time_fields_t, hour));
    EXPECT_EQ(10u, offsetof(date_time_fields_t, minute));
    EXPECT_EQ(12u, offsetof(date_time_fields_t, second));
    EXPECT_EQ(14u, offsetof(date_time_fields_t, spare2));
}

TEST(DateTime, IsMadeOfFieldsAsUtcUnlessSaidOtherwise)
{
    const date_time_fields_t fields = {2024, 2, 0, 29, 23, 59, 58, 0};
    ExpectValue(kLeapDay, true, CDateTime(fields));
    ExpectValue(kLeapDay, true, CDateTime(fields, true));
    ExpectValue(kLeapDay, false, CDateTime(fields, false));
}

TEST(DateTime, SpareFieldsAreIgnoredAndComeBackZero)
{
    const CDateTime value(date_time_fields_t{2024, 2, 4711, 29, 23, 59, 58, 65535});
    EXPECT_EQ(kLeapDay, value.GetSeconds());
    EXPECT_EQ("2024 2 29 23 59 58 (0 0)", TextOf(value.GetFields()));
}

TEST(DateTime, FieldsOutOfTheirRangeCarryOver)
{
    const auto text_of = [](const date_time_fields_t& fields) { return IsoText(CDateTime(fields)); };
    EXPECT_EQ("2024-03-01 00:00:00", text_of({2024, 2, 0, 30, 0, 0, 0, 0}));
    EXPECT_EQ("2023-03-02 00:00:00", text_of({2023, 2, 0, 30, 0, 0, 0, 0}));
    EXPECT_EQ("2023-12-01 00:00:00", text_of({2024, 0, 0, 1, 0, 0, 0, 0}));
    EXPECT_EQ("2023-12-31 00:00:00", text_of({2024, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ("2025-01-01 00:00:00", text_of({2024, 13, 0, 1, 0, 0, 0, 0}));
    EXPECT_EQ("2024-01-02 02:02:39", text_of({2024, 1, 0, 1, 25, 61, 99, 0}));
}

TEST(DateTime, FirstSecondOf1970IsAnEmptyDate)
{
    const CDateTime value(date_time_fields_t{1970, 1, 0, 1, 0, 0, 0, 0});
    EXPECT_EQ(0, value.GetSeconds());
    EXPECT_EQ("0 0 0 0 0 0 (0 0)", TextOf(value.GetFields()));
    EXPECT_EQ("1970-01-01 00:00:00", IsoText(value));
    int year = 0;
    int month = 0;
    int day = 0;
    value.GetDate(year, month, day);
    EXPECT_EQ(1970, year);
    EXPECT_EQ(1, month);
    EXPECT_EQ(1, day);
}

TEST(DateTime, OnlyZeroSecondsAreEmptyWhateverTheFlag)
{
    EXPECT_EQ("0 0 0 0 0 0 (0 0)", TextOf(CDateTime(0, true).GetFields()));
    EXPECT_EQ("0 0 0 0 0 0 (0 0)", TextOf(CDateTime(0, false).GetFields()));
    EXPECT_EQ("1969 12 31 23 59 59 (0 0)", FieldsOf(-1));
    EXPECT_EQ("1970 1 1 0 0 1 (0 0)", FieldsOf(1));
}

TEST(DateTime, FieldsOfAnEmptyDateGiveNoEmptyDate)
{
    EXPECT_EQ(-62169984000, CDateTime(CDateTime().GetFields()).GetSeconds());
    EXPECT_EQ("Unable to cast value from [i] to [t].", FailureOf([] { FieldsOf(-62169984000); }));
}

TEST(DateTime, FieldsHoldTheYearsFrom0To65535)
{
    const char* const failure = "Unable to cast value from [i] to [t].";
    EXPECT_EQ("0 1 1 0 0 0 (0 0)", FieldsOf(-62167219200));
    EXPECT_EQ("65535 12 31 23 59 59 (0 0)", FieldsOf(2005949145599));
    EXPECT_EQ(failure, FailureOf([] { FieldsOf(-62167219201); }));
    EXPECT_EQ(failure, FailureOf([] { FieldsOf(2005949145600); }));
}

TEST(DateTime, SecondsThatHaveNoDateAreRefused)
{
    const std::string failure = "Seconds [67768036191676800] have no date.";
    CDateTime value(kNoDate, true);
    int number = 0;
    EXPECT_EQ(failure, FailureOf([&] { value.GetFields(); }));
    EXPECT_EQ(failure, FailureOf([&] { value.GetDate(number, number, number); }));
    EXPECT_EQ(failure, FailureOf([&] { value.GetTime(number, number, number); }));
    EXPECT_EQ(failure, FailureOf([&] { value.SetDate(2024, 1, 1); }));
    EXPECT_EQ(failure, FailureOf([&] { value.SetTime(0, 0, 0); }));
    EXPECT_EQ("Seconds [67768036191676800] have no local date.", FailureOf([&] { value.ToLocal(); }));
    ExpectValue(kNoDate, true, value);
}

TEST(DateTime, LastSecondThatHasADateHasNoYearInAnInt)
{
    const CDateTime value(kNoDate - 1, true);
    int number = 0;
    EXPECT_EQ("23:59:59", value.ToString("%H:%M:%S"));
    EXPECT_EQ("Unable to cast value from [l] to [i].",
              FailureOf([&] { value.GetDate(number, number, number); }));
    EXPECT_EQ("Unable to cast value from [l] to [i].", FailureOf([&] { value.GetFields(); }));
    value.GetTime(number, number, number);
    EXPECT_EQ(59, number);
}

TEST(DateTime, GivesDateAndTimeAsTheyAreCounted)
{
    int numbers[6] = {};
    const CDateTime value(kLeapDay, false);
    value.GetDate(numbers[0], numbers[1], numbers[2]);
    value.GetTime(numbers[3], numbers[4], numbers[5]);
    const int expected[] = {2024, 2, 29, 23, 59, 58};
    EXPECT_TRUE(std::equal(std::begin(expected), std::end(expected), numbers));
}

TEST(DateTime, SetDateLeavesTheTimeOfDay)
{
    CDateTime value(kLeapDay, true);
    value.SetDate(1931, 5, 7);
    EXPECT_EQ("1931-05-07 23:59:58", IsoText(value));
    EXPECT_TRUE(value.IsUtc());
    CDateTime local(kLeapDay, false);
    local.SetDate(2030, 12, 31);
    EXPECT_EQ("2030-12-31 23:59:58", IsoText(local));
    EXPECT_FALSE(local.IsUtc());
}

TEST(DateTime, SetTimeLeavesTheDate)
{
    CDateTime value(kLeapDay, true);
    value.SetTime(1, 2, 3);
    EXPECT_EQ("2024-02-29 01:02:03", IsoText(value));
    EXPECT_TRUE(value.IsUtc());
    CDateTime local(kLeapDay, false);
    local.SetTime(0, 0, 0);
    EXPECT_EQ("2024-02-29 00:00:00", IsoText(local));
    EXPECT_FALSE(local.IsUtc());
}

TEST(DateTime, SetOutOfRangeCarriesOver)
{
    CDateTime value(kLeapDay, true);
    value.SetDate(2023, 14, -1);
    EXPECT_EQ("2024-01-30 23:59:58", IsoText(value));
    value.SetTime(-1, 61, -1);
    EXPECT_EQ("2024-01-30 00:00:59", IsoText(value));
    value.SetDate(-1, 1, 1);
    EXPECT_EQ("-1-01-01", value.ToString("%Y-%m-%d"));
}

TEST(DateTime, SetDateOutOfAllRangesIsRefusedAndChangesNothing)
{
    CDateTime value(kLeapDay, true);
    const std::string cast = "Unable to cast value from [l] to [i].";
    EXPECT_EQ(cast, FailureOf([&] { value.SetDate(INT_MIN, 1, 1); }));
    EXPECT_EQ(cast, FailureOf([&] { value.SetDate(2024, INT_MIN, 1); }));
    EXPECT_EQ("Date is out of range.", FailureOf([&] { value.SetDate(INT_MAX, INT_MAX, 1); }));
    EXPECT_EQ(kLeapDay, value.GetSeconds());
}

TEST(DateTime, LastSecondOf1969IsNotTakenForAFailure)
{
    EXPECT_EQ(-1, CDateTime(date_time_fields_t{1969, 12, 0, 31, 23, 59, 59, 0}).GetSeconds());
}

TEST(DateTime, FieldsDoNotLookAtTheTimeZone)
{
    for (const char* const zone : {"UTC0", kBerlin, kNewYork})
    {
        const time_zone_t guard(zone);
        for (const bool is_utc : {true, false})
        {
            CDateTime value({2024, 7, 0, 1, 14, 30, 0, 0}, is_utc);
            EXPECT_EQ(1719844200, value.GetSeconds()) << zone;
            EXPECT_EQ("2024 7 1 14 30 0 (0 0)", TextOf(value.GetFields())) << zone;
            EXPECT_EQ("2024-07-01 14:30:00", IsoText(value)) << zone;
            value.SetTime(14, 30, 0);
            EXPECT_EQ(1719844200, value.GetSeconds()) << zone;
        }
        EXPECT_EQ(1719844200,
                  CDateTime::FromString("2024-07-01 14:30:00", CDateTime::kIsoFormat).GetSeconds())
            << zone;
    }
}

TEST(DateTime, ToLocalOfALocalValueChangesNothing)
{
    const time_zone_t guard(kBerlin);
    ExpectValue(kLeapDay, false, CDateTime(kLeapDay, false).ToLocal());
    ExpectValue(kNoDate, false, CDateTime(kNoDate, false).ToLocal());
}

TEST(DateTime, ToUtcOfAUtcValueChangesNothing)
{
    const time_zone_t guard(kBerlin);
    ExpectValue(kLeapDay, true, CDateTime(kLeapDay, true).ToUtc());
    ExpectValue(kNoDate, true, CDateTime(kNoDate, true).ToUtc());
}

TEST(DateTime, ToLocalTakesTheOffsetAtTheValue)
{
    const time_zone_t guard(kBerlin);
    ExpectValue(kSummer + 7200, false, CDateTime(kSummer, true).ToLocal());
    ExpectValue(kWinter + 3600, false, CDateTime(kWinter, true).ToLocal());
    EXPECT_EQ("2024-07-01 14:00:00", IsoText(CDateTime(kSummer, true).ToLocal()));
}

TEST(DateTime, ToLocalOfAnEmptyDateIsTheOffset)
{
    const time_zone_t guard(kIndia);
    ExpectValue(19800, false, CDateTime().ToLocal());
}

TEST(DateTime, TimeZoneIsThatOfTheCall)
{
    const time_zone_t guard("UTC0");
    ExpectValue(kSummer, false, CDateTime(kSummer, true).ToLocal());
    ::setenv("TZ", kIndia, 1);
    ExpectValue(kSummer + 19800, false, CDateTime(kSummer, true).ToLocal());
}

TEST(DateTimeEveryHour, InGreenwich) { EXPECT_EQ(kYear2100, every_hour_t("UTC0").FirstFault()); }
TEST(DateTimeEveryHour, InIndia) { EXPECT_EQ(kYear2100, every_hour_t(kIndia).FirstFault()); }
TEST(DateTimeEveryHour, InBerlinWithSummerTime) { EXPECT_EQ(kYear2100, every_hour_t(kBerlin).FirstFault()); }
