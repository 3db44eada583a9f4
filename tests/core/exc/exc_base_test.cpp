#include "nelvo/core/exc/exc_base.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/file_locked_exc.h"
#include "tests/core/exc/copies.h"
#include "tests/support/vtable_slot.h"

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
    EXPECT_LT(VtableSlot(&exc_base_t::Rethrow), VtableSlot(&exc_base_t::Translate));
    EXPECT_EQ(VtableSlot(&exc_base_t::Translate) + 1, VtableSlot(&posix::errno_exc_t::CloneErrno));
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
