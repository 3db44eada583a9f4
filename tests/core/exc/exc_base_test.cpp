#include "nelvo/core/exc/exc_base.h"

#include <cerrno>
#include <stdexcept>

#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/file_locked_exc.h"
#include "nelvo/logging/log.h"
#include "tests/core/exc/buffers.h"
#include "tests/core/exc/copies.h"
#include "tests/support/golden.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/vtable_slot.h"

using namespace std::string_literals;
using exc::exc_base_t;

namespace
{

class bracketing_t : public exc::ITranslator
{
public:
    std::string Translate(const std::string& text) override { return "<" + text + ">"; }
};

exc_base_t TwoLines()
{
    exc_base_t e("A");
    e.AddMessage("B");
    return e;
}

// What stands in tests/data/exc_base.hex.
exc_base_t Recorded()
{
    exc_base_t e("first");
    e.AddMarkedMessage("second");
    e.GetTrace().properties = {{"key", "value"}, {"a", "1"}};
    e.AddEvent(6);
    e.AddEvent(1, "info");
    return e;
}

exc_base_t Event(std::int32_t code, const std::string& info)
{
    exc_base_t e("new event");
    e.AddEvent(code, info);
    return e;
}

// What becomes of a record with four bytes replaced: its full text, or the failure.
std::string Outcome(std::size_t offset, const char* bytes)
{
    std::string record = Unhex("01 00 00 00"                  // 0: one line
                               "01 00 00 00 41 00"            // 4: A, not marked
                               "01 00 00 00"                  // 10: one property
                               "01 00 00 00 6b"               // 14: k
                               "01 00 00 00 76"               // 19: v
                               "01 00 00 00"                  // 24: one event
                               "01 00 00 00 01 00 00 00 69"); // 28: 1, i
    record.replace(offset, 4, Unhex(bytes));
    exc_base_t e;
    const std::string failure = ReadFailure(e, record);
    return failure == "no failure" ? e.GetFullText() : failure;
}

// Keeps what is logged.
class ExcBaseEvents : public ::testing::Test
{
protected:
    void SetUp() override { logging::GetProcessLog()->set_receiver(m_receiver); }
    void TearDown() override { logging::GetProcessLog()->set_receiver({}); }

    std::string Logged() const { return WithoutHeads(m_receiver->text()); }

private:
    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
};

} // namespace

TEST(ExcBase, StartsWithoutLines)
{
    const exc_base_t e;
    EXPECT_STREQ("", e.what());
    EXPECT_EQ("", e.GetPlainText());
    EXPECT_EQ("", e.GetFullText());
}

TEST(ExcBase, LinesAreJoinedByLineFeedsOldestFirst)
{
    EXPECT_STREQ("A\nB", TwoLines().what());
    EXPECT_EQ("A\nB", TwoLines().GetPlainText());
}

TEST(ExcBase, MarkedLineShowsItsPrefixInWhatOnly)
{
    exc_base_t e("A");
    e.AddMarkedMessage("B");
    e.AddMessage("C");
    EXPECT_STREQ("A\n--tr:B\nC", e.what());
    EXPECT_EQ("A\nB\nC", e.GetPlainText());
}

TEST(ExcBase, EmptyLinesAreLines)
{
    exc_base_t e("");
    e.AddMessage("");
    e.AddMarkedMessage("");
    EXPECT_STREQ("\n\n--tr:", e.what());
    EXPECT_EQ("\n\n", e.GetPlainText());
}

TEST(ExcBase, TextOfALineIsTakenWithoutSubstitution)
{
    exc_base_t e("%01");
    e.AddMessage("% 7");
    e.AddMarkedMessage("%+2");
    EXPECT_EQ("%01\n% 7\n%+2", e.GetPlainText());
}

TEST(ExcBase, FormattedLineTakesOneToThreeArgumentsAndIsUnmarked)
{
    exc_base_t e;
    e.AddMessage("%1", 1);
    e.AddMessage("%2 %1", "a", "b");
    e.AddMessage("%1%2%3", "a", 2, true);
    EXPECT_STREQ("1\nb a\na2true", e.what());
}

TEST(ExcBase, TranslateRewritesEachLineAndKeepsTheMarks)
{
    exc_base_t e("A");
    e.AddMarkedMessage("B");
    bracketing_t translator;
    e.Translate(translator);
    EXPECT_STREQ("<A>\n--tr:<B>", e.what());
    EXPECT_EQ("<A>\n<B>", e.GetPlainText());
}

TEST(ExcBase, TranslatorThatThrowsLeavesAllLinesAsTheyWere)
{
    class failing_t : public exc::ITranslator
    {
    public:
        std::string Translate(const std::string& text) override
        {
            return text == "B" ? throw std::runtime_error("no word for B") : "translated";
        }
    };

    exc_base_t e = TwoLines();
    failing_t translator;
    EXPECT_THROW(e.Translate(translator), std::runtime_error);
    e.AddMessage("C");
    EXPECT_STREQ("A\nB\nC", e.what());
    bracketing_t other;
    e.Translate(other);
    EXPECT_STREQ("<A>\n<B>\n<C>", e.what());
}

TEST(ExcBase, LineAddedAfterTranslationFollowsTheNewTexts)
{
    exc_base_t e("A");
    bracketing_t translator;
    e.Translate(translator);
    e.AddMessage("B");
    EXPECT_STREQ("<A>\nB", e.what());
}

TEST(ExcBase, DerivedClassesAreTranslatedAsTheBase)
{
    bracketing_t translator;
    posix::errno_exc_t failed("A", ENOENT);
    failed.Translate(translator);
    EXPECT_STREQ("<No such file or directory>\n<A>", failed.what());
    exc::file_locked_exc_t locked("a");
    locked.Translate(translator);
    EXPECT_STREQ("<File [a] is locked.>", locked.what());
    EXPECT_EQ("a", locked.GetFile());
}

TEST(ExcBase, NamesTheThreadThatBuiltIt)
{
    EXPECT_EQ(pthread_self(), exc_base_t().GetThreadId());
    EXPECT_EQ(pthread_self(), exc_base_t("A").GetThreadId());
}

TEST(ExcBase, ThreadOfAnyExceptionIsZeroOutsideTheFamily)
{
    const exc_base_t foreign_thread = Detailed([] { return exc_base_t("A"); });
    EXPECT_EQ(0u, exc_base_t::GetThreadId(std::runtime_error("A")));
    EXPECT_EQ(pthread_self(), exc_base_t::GetThreadId(exc::file_locked_exc_t("A")));
    EXPECT_EQ(foreign_thread.GetThreadId(), exc_base_t::GetThreadId(foreign_thread));
}

TEST(ExcBase, CopyCloneAndRethrowCarryEverything)
{
    const exc_base_t e = Detailed([] { return exc_base_t("A"); });
    EXPECT_EQ("A\n--tr:marked\n--tr:property:key:value\n--tr:event:2:info", e.GetFullText());
    const exc_base_t copy = e;
    ExpectCopyOf<exc_base_t>(e, copy);
    ExpectCopyOf<exc_base_t>(e, *e.Clone());
    LookAtRethrown(e, [&e](const exc_base_t& thrown) { ExpectCopyOf<exc_base_t>(e, thrown); });
}

TEST(ExcBase, FullTextIsWhatAloneWithoutATrace) { EXPECT_EQ("A\nB", TwoLines().GetFullText()); }

TEST(ExcBase, EventWithoutInfoIsKeptWithEmptyInfo)
{
    exc_base_t e("A");
    e.AddEvent(6);
    EXPECT_TRUE(e.GetTrace().HasEvent(6));
    EXPECT_EQ("A\n--tr:event:6:", e.GetFullText());
}

TEST(ExcBase, VirtualOperationsFollowWhatInTheirOrder)
{
    EXPECT_EQ(2u, VtableSlot(&std::exception::what));
    EXPECT_EQ(3u, VtableSlot(&exc_base_t::Clone));
    EXPECT_EQ(4u, VtableSlot(&exc_base_t::Rethrow));
    EXPECT_EQ(5u, VtableSlot(&exc_base_t::ReadFrom));
    EXPECT_EQ(6u, VtableSlot(&exc_base_t::WriteTo));
    EXPECT_EQ(7u, VtableSlot(&exc_base_t::Translate));
    EXPECT_EQ(8u, VtableSlot(&posix::errno_exc_t::CloneErrno));
}

TEST(ExcBase, IsAVirtualTableThenLinesTextsTraceAndThread)
{
    const exc_base_t e("A");
    const auto offset_of = [&e](const void* field)
    {
        const void* const begin = &e;
        return static_cast<std::size_t>(static_cast<const char*>(field) - static_cast<const char*>(begin));
    };
    constexpr std::size_t kMarkedText = sizeof(void*) + sizeof(std::vector<exc_entry_t>);
    constexpr std::size_t kPlainText = kMarkedText + sizeof(std::string);
    constexpr std::size_t kTrace = kPlainText + sizeof(std::string);
    EXPECT_LT(kMarkedText, offset_of(e.what())) << "a short text stands in its string";
    EXPECT_GT(kPlainText, offset_of(e.what()));
    EXPECT_EQ(kPlainText, offset_of(&e.GetPlainText()));
    EXPECT_EQ(kTrace, offset_of(&e.GetTrace()));
    EXPECT_EQ(kTrace + sizeof(exc_trace_t) + sizeof(pthread_t), sizeof(exc_base_t));
}

TEST(ExcBaseBuffer, IsWrittenAsTheRecordedBytes)
{
    EXPECT_EQ(Hex(Golden("exc_base")), Hex(Written(Recorded())));
    EXPECT_EQ(Hex(std::string(12, '\0')), Hex(Written(exc_base_t()))) << "three counts of 0";
}

TEST(ExcBaseBuffer, IsReadFromTheRecordedBytes)
{
    const exc_base_t read = Read(Golden("exc_base"));
    EXPECT_EQ(Recorded().GetFullText(), read.GetFullText());
    EXPECT_EQ("first\nsecond", read.GetPlainText());
    EXPECT_STREQ("", Read(std::string(12, '\0')).what());
}

TEST(ExcBaseBuffer, EndsBehindItsLastByte)
{
    CBufReader reader(ArrayOf(Golden("exc_base") + "more"));
    const exc_base_t read(reader);
    EXPECT_EQ(Golden("exc_base").size(), reader.GetPosition());
}

TEST(ExcBaseBuffer, ReadingReplacesLinesAndTrace)
{
    exc_base_t e = Recorded();
    CBufReader reader(ArrayOf(Written(Event(3, "new"))));
    e.ReadFrom(reader);
    EXPECT_EQ("new event\n--tr:event:3:new", e.GetFullText());
    e.AddMessage("B");
    EXPECT_STREQ("new event\nB", e.what());
}

TEST(ExcBaseBuffer, ThreadIsTheReadersAndNotWritten)
{
    const exc_base_t foreign = Detailed([] { return exc_base_t("A"); });
    EXPECT_EQ(pthread_self(), Read(Written(foreign)).GetThreadId());
    exc_base_t e = foreign;
    CBufReader reader(ArrayOf(Golden("exc_base")));
    e.ReadFrom(reader);
    EXPECT_EQ(foreign.GetThreadId(), e.GetThreadId()) << "but one that is there keeps its own";
}

TEST(ExcBaseBuffer, CountsBelowZeroMeanNone)
{
    for (const char* const counts :
         {"ff ff ff ff 00 00 00 80 fe ff ff ff", "00 00 00 00 ff ff ff ff 00 00 00 80"})
        EXPECT_EQ("", Read(Unhex(counts)).GetFullText());
}

TEST(ExcBaseBuffer, RepeatedKeyKeepsItsFirstValue)
{
    const std::string key = Unhex("01 00 00 00 6b");
    const std::string record = Unhex("00 00 00 00 02 00 00 00") + key + Unhex("01 00 00 00 31") + key +
                               Unhex("01 00 00 00 32") + Unhex("00 00 00 00");
    EXPECT_EQ("\n--tr:property:k:1", Read(record).GetFullText());
}

TEST(ExcBaseBuffer, AnyByteButZeroMarksALine)
{
    const std::string record = Unhex("01 00 00 00 01 00 00 00 41 02") + std::string(8, '\0');
    EXPECT_STREQ("--tr:A", Read(record).what());
}

TEST_F(ExcBaseEvents, CodesOneToSixAreTaken)
{
    for (std::int32_t code = 1; code <= 6; ++code)
    {
        const exc_base_t read = Read(Written(Event(code, "info")));
        EXPECT_TRUE(read.GetTrace().HasEvent(code)) << code;
    }
    EXPECT_EQ("", Logged());
}

TEST_F(ExcBaseEvents, OtherCodesAreDroppedWithAWarning)
{
    for (const std::int32_t code : {0, 7, -1, INT32_MAX, INT32_MIN})
        EXPECT_EQ("new event", Read(Written(Event(code, "info"))).GetFullText()) << code;
    EXPECT_EQ("       | WARN|Unexpected trace event: [0]. Info: info.\n"
              "       | WARN|Unexpected trace event: [7]. Info: info.\n"
              "       | WARN|Unexpected trace event: [-1]. Info: info.\n"
              "       | WARN|Unexpected trace event: [2147483647]. Info: info.\n"
              "       | WARN|Unexpected trace event: [-2147483648]. Info: info.\n",
              Logged());
}

TEST_F(ExcBaseEvents, DroppedOneTakesItsInfoAlongAndLeavesTheOthers)
{
    exc_base_t e;
    e.AddEvent(7, "dropped %1");
    e.AddEvent(2, "kept");
    EXPECT_EQ("\n--tr:event:2:kept", Read(Written(e)).GetFullText());
    EXPECT_EQ("       | WARN|Unexpected trace event: [7]. Info: dropped %1.\n", Logged());
}

TEST(ExcBaseBuffer, EachCutIsToldAndLeavesTheExceptionAsItWas)
{
    ExpectEachCutTold(GoldenFields("exc_base"), "isbsbissssiisis",
                      [](const std::string& bytes, const std::string& failure)
                      {
                          exc_base_t e = Recorded();
                          EXPECT_EQ(failure, ReadFailure(e, bytes));
                          EXPECT_EQ(Recorded().GetFullText(), e.GetFullText());
                          e.AddMessage("C");
                          EXPECT_STREQ("first\n--tr:second\nC", e.what());
                      });
}

TEST(ExcBaseBuffer, EachFlippedBitIsReadOrTold)
{
    for (const std::string& bytes : BitFlips(Golden("exc_base")))
    {
        exc_base_t e("A");
        if (ReadFailure(e, bytes) != "no failure")
            EXPECT_EQ("A", e.GetFullText()) << Hex(bytes);
        else
            EXPECT_NE("A", e.GetFullText()) << Hex(bytes);
    }
}

TEST(ExcBaseBuffer, HostileLengthIsRefused)
{
    for (const std::size_t offset : {4U, 14U, 19U, 32U})
    {
        const std::string context = "Failed to extract multi-byte string from buffer .";
        EXPECT_EQ("Invalid length of the string '2147483647'.\n" + context, Outcome(offset, "ff ff ff 7f"));
        EXPECT_EQ("Invalid length of the string '2147483648'.\n" + context, Outcome(offset, "00 00 00 80"));
        EXPECT_EQ("Invalid length of the string '4294967295'.\n" + context, Outcome(offset, "ff ff ff ff"));
        EXPECT_EQ(OutOfBuffer(37, 524288000, offset + 4) + "\n" + context, Outcome(offset, "00 00 40 1f"));
        EXPECT_EQ("A\n--tr:property:k:v\n--tr:event:1:i", Outcome(offset, "01 00 00 00"));
    }
}

// What follows is read one byte early, as what should come there.
TEST(ExcBaseBuffer, LengthOfZeroIsAnEmptyText)
{
    const std::string context = "\nFailed to extract multi-byte string from buffer .";
    EXPECT_EQ(OutOfBuffer(37, 256, 17) + context, Outcome(4, "00 00 00 00"));
    EXPECT_EQ(OutOfBuffer(37, 363, 22) + context, Outcome(14, "00 00 00 00"));
    EXPECT_EQ(OutOfBuffer(37, 256, 35) + context, Outcome(19, "00 00 00 00"));
    EXPECT_EQ("A\n--tr:property:k:v\n--tr:event:1:", Outcome(32, "00 00 00 00"));
}

// The items are then read as what should come behind them.
TEST(ExcBaseBuffer, CountOfZeroOrBelowTakesNoItem)
{
    const std::string context = "\nFailed to extract multi-byte string from buffer .";
    for (const char* const count : {"00 00 00 00", "00 00 00 80", "ff ff ff ff"})
    {
        EXPECT_EQ(OutOfBuffer(37, 65601, 12) + context, Outcome(0, count));
        EXPECT_EQ(OutOfBuffer(37, 95744, 26) + context, Outcome(10, count));
        EXPECT_EQ("A\n--tr:property:k:v", Outcome(24, count));
    }
}

TEST(ExcBaseBuffer, HostileCountReadsItemsUntilTheBufferEnds)
{
    const std::string context = "\nFailed to extract multi-byte string from buffer .";
    const char* const count = "ff ff ff 7f";
    EXPECT_EQ(OutOfBuffer(37, 23789568, 20) + context, Outcome(0, count));
    EXPECT_EQ(OutOfBuffer(37, 16777216, 33) + context, Outcome(10, count));
    EXPECT_EQ(OutOfBuffer(37, 4, 37) + "\nFailed to extract integer value from buffer.", Outcome(24, count));
}

TEST(ExcTrace, TextListsPropertiesInKeyOrderThenEventsInOrderOfAdding)
{
    exc_trace_t trace;
    trace.events = {{5, "late"}, {1, "early"}};
    trace.properties = {{"b", "2"}, {"a", "1"}};
    EXPECT_EQ("--tr:property:a:1\n--tr:property:b:2\n--tr:event:5:late\n--tr:event:1:early", trace.ToText());
}

TEST(ExcTrace, TextOfAnEmptyTraceIsEmpty) { EXPECT_EQ("", exc_trace_t().ToText()); }

TEST(ExcTrace, AnswersWhetherItHoldsAnEvent)
{
    exc_trace_t trace;
    trace.events = {{5, "x"}};
    EXPECT_TRUE(trace.HasEvent(5));
    EXPECT_FALSE(trace.HasEvent(4));
}

TEST(ExcTrace, MergeKeepsOldValuesAndAppendsAllEvents)
{
    exc_trace_t trace;
    trace.properties = {{"a", "old"}};
    trace.events = {{1, "x"}};
    exc_trace_t other;
    other.properties = {{"a", "new"}, {"b", "added"}};
    other.events = {{1, "x"}, {2, "y"}};

    trace.Merge(other);

    EXPECT_EQ("--tr:property:a:old\n--tr:property:b:added\n--tr:event:1:x\n--tr:event:1:x\n--tr:event:2:y",
              trace.ToText());
}
