// What a sweep finds, shown with operations that are wrong in one way each.

#include "tests/faults/allocation_sweep.h"

#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <stdexcept>
#include <unistd.h>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

using testing::HasSubstr;

namespace
{

// The compiler may not leave it out, although nobody uses the memory.
void TakeMemory()
{
    const char* volatile block = new char('a');
    delete block;
}

std::string Done() { return "done"; }

std::string Findings(const swept_operation_t& operation)
{
    testing::TestPartResultArray results;
    {
        const testing::ScopedFakeTestPartResultReporter reporter(
            testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
        SweepAllocations(operation);
    }
    std::string text;
    for (int i = 0; i != results.size(); ++i)
        text += results.GetTestPartResult(i).message();
    return text;
}

} // namespace

TEST(AllocationSweep, TakesAnOperationThatThrowsOrSucceeds)
{
    SweepAllocations({[] { TakeMemory(); }, Done, "done"});
}

TEST(AllocationSweep, MakesEachAllocationFail)
{
    testing::internal::CaptureStdout();
    SweepAllocations({[]
                      {
                          TakeMemory();
                          TakeMemory();
                      },
                      Done, "done"});
    // One alone each, then the first or the second and no more, for neither gets behind a failure.
    EXPECT_EQ("swept: AllocationSweep.MakesEachAllocationFail: 4 failed allocations\n",
              testing::internal::GetCapturedStdout());
}

TEST(AllocationSweep, SeesEachWayToTheHeap)
{
    void* (*const ways[])(void*) = {
        [](void*) { return std::malloc(8); },
        [](void*) { return std::calloc(2, 8); },
        [](void* block) { return std::realloc(block, 64); },
    };
    for (auto* const way : ways)
    {
        void* const before = std::malloc(16);
        const std::size_t blocks = BlocksInUse();
        BeginShortage(0, shortage_t::kOfOne, asking_t::kThisThread);
        void* const refused = way(before);
        const shortage_end_t end = EndShortage();
        EXPECT_EQ(nullptr, refused);
        EXPECT_EQ(1u, end.asked);
        EXPECT_EQ(1u, end.failed);
        EXPECT_EQ(blocks, BlocksInUse());
        std::free(before);
        EXPECT_EQ(blocks - 1, BlocksInUse());
    }
}

TEST(AllocationSweep, FindsAWrongResult)
{
    static bool wrong = false;
    const swept_operation_t operation = {[]
                                         {
                                             void* const block = std::malloc(8);
                                             wrong = block == nullptr;
                                             std::free(block);
                                         },
                                         [] { return wrong ? "wrong" : "done"; }, "done"};
    EXPECT_THAT(Findings(operation), HasSubstr("wrong"));
}

TEST(AllocationSweep, FindsAnObjectThatAFailureHasChanged)
{
    static std::string text;
    const swept_operation_t operation = {[]
                                         {
                                             text = "half";
                                             TakeMemory();
                                             text = "whole";
                                         },
                                         [] { return std::exchange(text, ""); }, "whole", ""};
    EXPECT_THAT(Findings(operation), HasSubstr("half"));
}

TEST(AllocationSweep, FindsAnObjectThatIsOfNoMoreUse)
{
    static bool broken = false;
    const swept_operation_t operation = {[]
                                         {
                                             if (broken)
                                                 return;
                                             broken = true;
                                             TakeMemory();
                                             broken = false;
                                         },
                                         [] { return broken ? "broken" : "done"; }, "done"};
    EXPECT_THAT(Findings(operation), HasSubstr("broken"));
}

TEST(AllocationSweep, FindsMemoryThatIsLost)
{
    static std::unique_ptr<std::string> lost;
    const swept_operation_t operation = {[]
                                         {
                                             auto* const block = new int(0);
                                             try
                                             {
                                                 TakeMemory();
                                             }
                                             catch (...)
                                             {
                                                 if (lost == nullptr)
                                                     lost.reset(reinterpret_cast<std::string*>(block));
                                                 throw;
                                             }
                                             delete block;
                                         },
                                         Done, "done"};
    EXPECT_THAT(Findings(operation), HasSubstr("blocks, next descriptor"));
    operator delete(lost.release());
}

TEST(AllocationSweep, FindsADescriptorThatIsLost)
{
    static int descriptor = -1;
    const swept_operation_t operation = {[]
                                         {
                                             descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
                                             TakeMemory();
                                             ::close(descriptor);
                                         },
                                         Done, "done"};
    EXPECT_THAT(Findings(operation), HasSubstr("next descriptor"));
}

TEST(AllocationSweep, FindsWhatIsNoStdException)
{
    const swept_operation_t operation = {[]
                                         {
                                             try
                                             {
                                                 TakeMemory();
                                             }
                                             catch (...)
                                             {
                                                 throw 1;
                                             }
                                         },
                                         Done, "done"};
    EXPECT_THAT(Findings(operation), HasSubstr("no std::exception"));
}

TEST(AllocationSweep, FindsAFailureThatSpeaksOfSomethingElse)
{
    const swept_operation_t operation = {[]
                                         {
                                             try
                                             {
                                                 TakeMemory();
                                             }
                                             catch (std::exception&)
                                             {
                                                 throw std::range_error("too far");
                                             }
                                         },
                                         Done, "done"};
    EXPECT_THAT(Findings(operation), HasSubstr("too far"));
}

TEST(AllocationSweep, TakesMissingLinesOnlyWhereTheyMayBeMissing)
{
    static std::string text;
    swept_operation_t operation = {[]
                                   {
                                       text += "a\n";
                                       void* const block = std::malloc(8);
                                       text += block != nullptr ? "b\n" : "";
                                       std::free(block);
                                       text += "c\n";
                                   },
                                   [] { return std::exchange(text, ""); }, "a\nb\nc\n"};
    EXPECT_THAT(Findings(operation), HasSubstr("a\nc"));
    operation.may_lose_lines = true;
    SweepAllocations(operation);
}

TEST(AllocationSweep, TakesNoLineThatWasNotExpected)
{
    static std::string text;
    const swept_operation_t operation = {[]
                                         {
                                             void* const block = std::malloc(8);
                                             text += block != nullptr ? "a\nb\n" : "b\na\n";
                                             std::free(block);
                                         },
                                         [] { return std::exchange(text, ""); },
                                         "a\nb\n",
                                         {},
                                         true};
    EXPECT_THAT(Findings(operation), HasSubstr("b\na"));
}
