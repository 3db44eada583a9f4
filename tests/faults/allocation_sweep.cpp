#include "tests/faults/allocation_sweep.h"

#include <fcntl.h>
#include <iostream>
#include <ostream>
#include <sstream>
#include <unistd.h>

#include <gtest/gtest.h>

namespace
{

constexpr std::size_t kMostAllocations = 10000;

struct outcome_t
{
    shortage_end_t end;
    std::optional<std::string> failure;
};

// Nothing here takes memory before there is some again.
outcome_t ActInShortage(const std::function<void()>& act, std::size_t after, shortage_t shortage,
                        asking_t asking)
{
    BeginShortage(after, shortage, asking);
    try
    {
        act();
    }
    catch (const std::exception& e)
    {
        const shortage_end_t end = EndShortage();
        return {end, e.what()};
    }
    catch (...)
    {
        const shortage_end_t end = EndShortage();
        return {end, "no std::exception"};
    }
    return {EndShortage(), {}};
}

// What a run must leave as it was: the blocks of memory in use, and the lowest free descriptor.
struct resources_t
{
    std::size_t blocks;
    int descriptor;

    friend bool operator==(const resources_t& left, const resources_t& right)
    {
        return left.blocks == right.blocks && left.descriptor == right.descriptor;
    }
    friend std::ostream& operator<<(std::ostream& out, const resources_t& resources)
    {
        return out << resources.blocks << " blocks, next descriptor " << resources.descriptor;
    }
};

resources_t Resources()
{
    const int descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(descriptor);
    return {BlocksInUse(), descriptor};
}

// Whether the first line of the text names the want of memory: that of the C++ library or of the system.
bool SpeaksOfMemory(const std::string& text)
{
    const std::string line = text.substr(0, text.find('\n'));
    return line == "std::bad_alloc" || line.find("Cannot allocate memory") != std::string::npos;
}

bool IsOther(const swept_operation_t& operation, const std::string& text)
{
    return !operation.other_failure.empty() && text.find(operation.other_failure) == 0;
}

// Whether lines can be left out of the whole to give the text.
bool IsPartOf(const std::string& text, const std::string& whole)
{
    std::istringstream lines(text);
    std::istringstream whole_lines(whole);
    std::string whole_line;
    for (std::string line; std::getline(lines, line);)
        do
            if (!std::getline(whole_lines, whole_line))
                return false;
        while (whole_line != line);
    return true;
}

void ExpectOutcome(const swept_operation_t& operation, const outcome_t& outcome, const std::string& result)
{
    if (outcome.failure)
    {
        EXPECT_TRUE(SpeaksOfMemory(*outcome.failure) || IsOther(operation, *outcome.failure))
            << *outcome.failure;
        EXPECT_EQ(operation.after_failure.value_or(result), result);
        return;
    }
    const bool is_good =
        operation.may_lose_lines ? IsPartOf(result, operation.expected) : result == operation.expected;
    EXPECT_TRUE(is_good) << "expected: " << operation.expected << "\nresult: " << result;
}

void ExpectWork(const swept_operation_t& operation)
{
    operation.act();
    EXPECT_EQ(operation.expected, operation.result());
}

std::size_t ExpectActInShortage(const swept_operation_t& operation, std::size_t after, shortage_t shortage)
{
    const outcome_t outcome = ActInShortage(operation.act, after, shortage, operation.asking);
    ExpectOutcome(operation, outcome, operation.result());
    return outcome.end.failed;
}

// One run with a shortage and one without; the number of allocations that failed.
std::size_t RunOnce(const swept_operation_t& operation, std::size_t after, shortage_t shortage)
{
    SCOPED_TRACE("allocation " + std::to_string(after) +
                 (shortage == shortage_t::kOfOne ? " fails" : " and all behind it fail"));
    const resources_t before = Resources();
    const std::size_t failed = ExpectActInShortage(operation, after, shortage);
    ExpectWork(operation);
    const resources_t after_it = Resources();
    EXPECT_TRUE(testing::Test::HasFailure() || before == after_it) << before << "; " << after_it;
    return failed;
}

std::size_t Sweep(const swept_operation_t& operation, shortage_t shortage)
{
    std::size_t sum = 0;
    for (std::size_t after = 0; after != kMostAllocations; ++after)
    {
        const std::size_t failed = RunOnce(operation, after, shortage);
        if (failed == 0 || testing::Test::HasFailure())
            return sum;
        sum += failed;
    }
    ADD_FAILURE() << "there is no end to the allocations";
    return sum;
}

void Tell(std::size_t failed)
{
    const testing::TestInfo* const info = testing::UnitTest::GetInstance()->current_test_info();
    testing::Test::RecordProperty("failed_allocations", std::to_string(failed));
    std::cout << "swept: " << info->test_suite_name() << '.' << info->name() << ": " << failed
              << " failed allocations" << std::endl;
}

} // namespace

// Two runs come first, so that what is built once is there.
void SweepAllocations(const swept_operation_t& operation)
{
    ExpectWork(operation);
    ExpectWork(operation);
    Tell(Sweep(operation, shortage_t::kOfOne) + Sweep(operation, shortage_t::kFromThenOn));
}

void SweepFirstUse(const std::function<void()>& use)
{
    std::size_t failed = 0;
    for (std::size_t after = 0; after != kMostAllocations; ++after)
    {
        const outcome_t outcome = ActInShortage(use, after, shortage_t::kFromThenOn, asking_t::kThisThread);
        if (!outcome.failure)
            break;
        EXPECT_TRUE(SpeaksOfMemory(*outcome.failure)) << *outcome.failure;
        ++failed;
    }
    Tell(failed);
    use();
}
