#include "nelvo/logging/format/line_format.h"

#include <cstdlib>
#include <ctime>
#include <optional>
#include <pthread.h>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

namespace
{

std::optional<std::time_t> g_time;
std::vector<std::time_t> g_next_times;
bool g_has_local_time = true;
int g_breakdowns = 0;
std::optional<pthread_t> g_thread;

} // namespace

// This program's own clock and thread id. The library's calls come here.
extern "C" time_t time(time_t* out) noexcept
{
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    time_t result = g_time.value_or(now.tv_sec);
    if (!g_next_times.empty())
    {
        result = g_next_times.front();
        g_next_times.erase(g_next_times.begin());
    }
    if (out != nullptr)
        *out = result;
    return result;
}

extern "C" struct tm* localtime(const time_t* time) noexcept
{
    static struct tm result;
    ++g_breakdowns;
    ::tzset();
    return g_has_local_time ? ::localtime_r(time, &result) : nullptr;
}

extern "C" pthread_t pthread_self() noexcept
{
    return g_thread.value_or(reinterpret_cast<pthread_t>(__builtin_thread_pointer()));
}

namespace
{

using logging::format::format_lines;
using logging::format::GetLocalTimeText;
using logging::format::line_filter_t;
using logging::format::line_format_t;

constexpr std::time_t kTime = 1794525245; // 12.11.2026 23:14:05 UTC

class bracket_filter_t : public line_filter_t
{
public:
    std::string filter_line(std::string_view text) override { return "(" + std::string(text) + ")"; }
};

class throwing_filter_t : public line_filter_t
{
public:
    std::string filter_line(std::string_view) override { throw std::runtime_error("filter"); }
};

std::string Padded(const std::string& text, std::size_t width)
{
    return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

class LineFormat : public ::testing::Test
{
protected:
    // The time text that a case before this one left behind is replaced.
    LineFormat()
    {
        ::setenv("TZ", "UTC", 1);
        g_has_local_time = true;
        g_time = kTime - 1;
        GetLocalTimeText();
        g_time = kTime;
    }

    static std::string Thread() { return "<" + Padded(std::to_string(::pthread_self()), 6) + "> "; }
    static std::string Head() { return "[12.11.2026 23:14:05] " + Thread(); }
    static std::string LabelHead()
    {
        return "[12.11.2026 23:14:05] <" + Padded(std::to_string(::pthread_self() % 100), 2) + "> ";
    }

    std::string Normal(std::int32_t severity, std::string_view text, std::int32_t indent = 0,
                       line_filter_t* filter = nullptr) const
    {
        return format_lines(m_format, 0, severity, indent, "\n", text, filter);
    }

    std::string Label(std::int32_t severity, std::string_view text, std::int32_t indent = 0,
                      std::int32_t mode = 1) const
    {
        return format_lines(m_format, mode, severity, indent, "\n", text, nullptr);
    }

    line_format_t m_format{"agentid"};
};

std::string Prefix(std::string_view tag) { return line_format_t(tag).get_prefix(); }

} // namespace

TEST_F(LineFormat, NormalLineCarriesTimeThreadAndChannel)
{
    EXPECT_EQ(Head() + "agentid| Looking for existed agentId\n", Normal(1, "Looking for existed agentId"));
    EXPECT_EQ(Head() + "agentid| Agent id\n", Normal(2, "Agent id"));
}

TEST_F(LineFormat, UnknownSeverityLooksPlain)
{
    EXPECT_EQ(Head() + "agentid| a\n" + Head() + "agentid| b\n", Normal(0, "a\nb"));
    EXPECT_EQ(Head() + "agentid| a\n", Normal(5, "a"));
}

TEST_F(LineFormat, WarningIsMarkedOnceAndContinuedAfterwards)
{
    EXPECT_EQ(Head() + "agentid| WARN|first line\n" + Head() + "agentid| >>  |second line\n" + Head() +
                  "agentid| >>  |third line\n",
              Normal(3, "first line\nsecond line\nthird line"));
}

TEST_F(LineFormat, ErrorIsMarkedOnceAndContinuedAfterwards)
{
    EXPECT_EQ(Head() + "agentid| ERR |first line\n" + Head() + "agentid| >>  |second line\n",
              Normal(4, "first line\nsecond line"));
}

TEST_F(LineFormat, PlainLinesHaveNoMark)
{
    EXPECT_EQ(Head() + "agentid| a\n" + Head() + "agentid| b\n", Normal(2, "a\nb"));
}

TEST_F(LineFormat, EachIndentStepIsTwoBlanks)
{
    EXPECT_EQ(Head() + "agentid| a\n", Normal(1, "a", 0));
    EXPECT_EQ(Head() + "agentid|   a\n", Normal(1, "a", 1));
    EXPECT_EQ(Head() + "agentid|       a\n" + Head() + "agentid|       b\n", Normal(1, "a\nb", 3));
}

TEST_F(LineFormat, IndentBelowZeroAddsNothing) { EXPECT_EQ(Head() + "agentid| a\n", Normal(1, "a", -1)); }

TEST_F(LineFormat, IndentStandsBehindTheMark)
{
    EXPECT_EQ(Head() + "agentid| WARN|      a\n", Normal(3, "a", 3));
    EXPECT_EQ(Head() + "agentid| ERR |  a\n" + Head() + "agentid| >>  |  b\n", Normal(4, "a\nb", 1));
}

TEST_F(LineFormat, EmptyTextIsOneLine) { EXPECT_EQ(Head() + "agentid| \n", Normal(2, "")); }

TEST_F(LineFormat, EmptyWarningKeepsItsMark) { EXPECT_EQ(Head() + "agentid| WARN|\n", Normal(3, "")); }

TEST_F(LineFormat, LineFeedAtTheEndStartsNoLine)
{
    EXPECT_EQ(Head() + "agentid| a\n", Normal(2, "a\n"));
    EXPECT_EQ(Head() + "agentid| \n", Normal(2, "\n"));
    EXPECT_EQ(Head() + "agentid| \n" + Head() + "agentid| \n", Normal(2, "\n\n"));
}

TEST_F(LineFormat, EmptyLinesInsideTheTextStay)
{
    EXPECT_EQ(Head() + "agentid| a\n" + Head() + "agentid| \n" + Head() + "agentid| b\n",
              Normal(2, "a\n\nb"));
    EXPECT_EQ(Head() + "agentid| WARN|\n" + Head() + "agentid| >>  |b\n", Normal(3, "\nb"));
}

TEST_F(LineFormat, OtherControlCharactersAreText)
{
    const std::string text("a\r\nb\0c\x1b\xff", 8);
    EXPECT_EQ(Head() + "agentid| a\r\n" + Head() + "agentid| " + std::string("b\0c\x1b\xff\n", 6),
              Normal(2, text));
}

TEST_F(LineFormat, LongLineIsNotWrapped)
{
    const std::string text(10485760, 'x');
    EXPECT_TRUE(Head() + "agentid| " + text + "\n" == Normal(2, text));
}

TEST_F(LineFormat, LineEndIsTheReceivers)
{
    EXPECT_EQ(Head() + "agentid| a\r\n" + Head() + "agentid| b\r\n",
              format_lines(m_format, 0, 2, 0, "\r\n", "a\nb", nullptr));
    EXPECT_EQ(LabelHead() + "Info     a\r\n" + LabelHead() + "Info     b\r\n",
              format_lines(m_format, 1, 2, 0, "\r\n", "a\nb", nullptr));
}

TEST_F(LineFormat, FilterGetsTheTextOfEachLineAlone)
{
    bracket_filter_t filter;
    EXPECT_EQ(Head() + "agentid| WARN|  (a)\n" + Head() + "agentid| >>  |  (b)\n",
              Normal(3, "a\nb", 1, &filter));
    EXPECT_EQ(Head() + "agentid| ()\n", Normal(2, "", 0, &filter));
    EXPECT_EQ(LabelHead() + "Info     (a)\n", format_lines(m_format, 1, 2, 0, "\n", "a", &filter));
}

TEST_F(LineFormat, FailureOfTheFilterPasses)
{
    throwing_filter_t filter;
    EXPECT_THROW(Normal(2, "a", 0, &filter), std::runtime_error);
}

TEST_F(LineFormat, LinesAreAppendedToWhatIsThere)
{
    std::string out = "before\n";
    logging::format::append_lines(out, m_format, 0, 2, 0, "\n", "a", nullptr);
    EXPECT_EQ("before\n" + Head() + "agentid| a\n", out);
}

TEST_F(LineFormat, LabelStyleShowsSeverityOnEachLineAndNoChannel)
{
    EXPECT_EQ(LabelHead() + "Info     a\n" + LabelHead() + "Info     b\n", Label(1, "a\nb"));
    EXPECT_EQ(LabelHead() + "Info     a\n", Label(2, "a"));
    EXPECT_EQ(LabelHead() + "Warning  a\n" + LabelHead() + "Warning  b\n", Label(3, "a\nb"));
    EXPECT_EQ(LabelHead() + "Error    a\n" + LabelHead() + "Error    b\n", Label(4, "a\nb"));
    EXPECT_EQ(LabelHead() + "a\n", Label(0, "a"));
    EXPECT_EQ(LabelHead() + "a\n", Label(5, "a"));
}

TEST_F(LineFormat, LabelStyleIndentsBehindTheLabel)
{
    EXPECT_EQ(LabelHead() + "Info         a\n", Label(1, "a", 2));
    EXPECT_EQ(LabelHead() + "Error      \n", Label(4, "", 1));
}

TEST_F(LineFormat, EveryStyleButZeroIsTheLabelStyle)
{
    EXPECT_EQ(LabelHead() + "Info     a\n", Label(1, "a", 0, 2));
    EXPECT_EQ(LabelHead() + "Info     a\n", Label(1, "a", 0, -1));
}

TEST_F(LineFormat, ShortThreadIdIsPaddedToSixPlaces)
{
    const auto head = [this](pthread_t thread)
    {
        g_thread = thread;
        const std::string line = Normal(2, "a");
        g_thread.reset();
        return line.substr(22);
    };
    EXPECT_EQ("<     7> agentid| a\n", head(7));
    EXPECT_EQ("<123456> agentid| a\n", head(123456));
    EXPECT_EQ("<139872223348480> agentid| a\n", head(139872223348480));
    EXPECT_EQ("<18446744073709551615> agentid| a\n", head(~pthread_t(0)));
}

TEST_F(LineFormat, LabelStyleShowsTheLastTwoDigitsOfTheThread)
{
    const auto head = [this](pthread_t thread)
    {
        g_thread = thread;
        const std::string line = Label(2, "a");
        g_thread.reset();
        return line.substr(22);
    };
    EXPECT_EQ("< 7> Info     a\n", head(107));
    EXPECT_EQ("<80> Info     a\n", head(139872223348480));
    EXPECT_EQ("< 0> Info     a\n", head(100));
}

TEST_F(LineFormat, EachLineReadsTheClock)
{
    g_next_times = {kTime, kTime + 1, kTime + 1};
    EXPECT_EQ("[12.11.2026 23:14:05] " + Thread() + "agentid| a\n" + "[12.11.2026 23:14:06] " + Thread() +
                  "agentid| b\n" + "[12.11.2026 23:14:06] " + Thread() + "agentid| c\n",
              Normal(2, "a\nb\nc"));
}

TEST_F(LineFormat, TimeFieldsArePaddedWithZeros)
{
    g_time = 981173106;
    EXPECT_EQ("[03.02.2001 04:05:06] " + Thread() + "agentid| a\n", Normal(2, "a"));
    g_time = 0;
    EXPECT_EQ("[01.01.1970 00:00:00] " + Thread() + "agentid| a\n", Normal(2, "a"));
    g_time = -59958144000; // the year 70
    EXPECT_EQ("[01.01.0070 00:00:00] " + Thread() + "agentid| a\n", Normal(2, "a"));
    g_time = 67767976233532799; // the last second with a year for localtime
    EXPECT_EQ("[31.12.2147483647 23:59:59] ", Normal(2, "a").substr(0, 28));
}

TEST_F(LineFormat, TimeIsLocalAndFollowsTheZone)
{
    const auto zone = [this](const char* name)
    {
        ::setenv("TZ", name, 1);
        return Normal(2, "a").substr(0, 22);
    };
    EXPECT_EQ("[12.11.2026 23:14:05] ", zone("UTC"));
    EXPECT_EQ("[13.11.2026 01:14:05] ", zone("XYZ-2"));
    EXPECT_EQ("[12.11.2026 18:14:05] ", zone("XYZ+5"));
    EXPECT_EQ("[12.11.2026 23:14:05] ", zone(""));
    EXPECT_EQ("[12.11.2026 18:14:05] ", zone("XYZ+5"));
}

TEST_F(LineFormat, UnsetZoneIsNotTheEmptyOne)
{
    ::setenv("TZ", "", 1);
    Normal(2, "a");
    ::unsetenv("TZ");
    g_breakdowns = 0;
    Normal(2, "a");
    EXPECT_EQ(1, g_breakdowns);
}

TEST_F(LineFormat, TimeIsBrokenDownOnceASecond)
{
    Normal(2, "a");
    g_breakdowns = 0;
    Normal(2, "a\nb");
    EXPECT_EQ(0, g_breakdowns);
    g_time = kTime + 1;
    Normal(2, "a\nb");
    EXPECT_EQ(1, g_breakdowns);
}

TEST_F(LineFormat, LongZoneIsFollowedToo)
{
    const std::string zone = "<" + std::string(100, 'X') + ">";
    ::setenv("TZ", (zone + "-1").c_str(), 1);
    EXPECT_EQ("[13.11.2026 00:14:05] ", Normal(2, "a").substr(0, 22));
    ::setenv("TZ", (zone + "-3").c_str(), 1);
    EXPECT_EQ("[13.11.2026 02:14:05] ", Normal(2, "a").substr(0, 22));
}

TEST_F(LineFormat, WithoutLocalTimeTheThreadFollowsAtOnce)
{
    g_has_local_time = false;
    EXPECT_EQ("TIME ---" + Thread() + "agentid| a\n", Normal(2, "a"));
    EXPECT_EQ("TIME ---" + LabelHead().substr(22) + "Info     a\n", Label(2, "a"));
    EXPECT_EQ("TIME ---", GetLocalTimeText());
}

TEST_F(LineFormat, LocalTimeComesBack)
{
    g_has_local_time = false;
    Normal(2, "a");
    g_has_local_time = true;
    g_time = kTime + 1;
    EXPECT_EQ("[12.11.2026 23:14:06] " + Thread() + "agentid| a\n", Normal(2, "a"));
}

TEST_F(LineFormat, LocalTimeTextHasNoBrackets) { EXPECT_EQ("12.11.2026 23:14:05", GetLocalTimeText()); }

TEST(LinePrefix, ShortTagIsPaddedToSevenCharacters)
{
    EXPECT_EQ("       | ", Prefix(""));
    EXPECT_EQ("dmn    | ", Prefix("dmn"));
    EXPECT_EQ("dt     | ", Prefix("dt "));
}

TEST(LinePrefix, TagOfSevenCharactersFits) { EXPECT_EQ("agentid| ", Prefix("agentid")); }

TEST(LinePrefix, LongTagLosesItsEnd) { EXPECT_EQ("abcdefg| ", Prefix("abcdefghi")); }

TEST(LinePrefix, TagCanBeSetAgain)
{
    line_format_t format("abcdefghi");
    format.set_tag("x");
    EXPECT_EQ("x      | ", format.get_prefix());
}
