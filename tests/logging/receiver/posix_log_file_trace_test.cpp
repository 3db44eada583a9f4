// Which calls of the system a file log makes for its messages, as seen by a process that traces it.

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <stdexcept>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/logging/log.h"
#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/receiver/posix_log_file.h"
#include "tests/support/temp_folder.h"

namespace
{

// Nothing else calls it, so it may stand for where the traced part begins and ends.
constexpr long kMark = SYS_getsid;

void Require(bool good)
{
    if (!good)
        throw std::runtime_error("tracing failed");
}

// The child's next stop is at a call; false if the child has ended.
bool RunToNextStop(pid_t child)
{
    int status = 0;
    Require(::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) == 0);
    Require(::waitpid(child, &status, 0) == child);
    Require(WIFSTOPPED(status) || (WIFEXITED(status) && WEXITSTATUS(status) == 0));
    return WIFSTOPPED(status);
}

// The numbers of all calls from one mark to the next.
std::vector<long> CallsBetweenMarks(pid_t child)
{
    std::vector<long> calls;
    int marks = 0;
    while (RunToNextStop(child))
    {
        __ptrace_syscall_info info = {};
        Require(::ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof(info), &info) > 0);
        if (info.op != PTRACE_SYSCALL_INFO_ENTRY)
            continue;
        const long call = static_cast<long>(info.entry.nr);
        if (call == kMark)
            ++marks;
        else if (marks == 1)
            calls.push_back(call);
    }
    return calls;
}

// What the work calls that runs between two marks in a child process.
template <class Work>
std::vector<long> TracedCalls(Work work)
{
    const pid_t child = ::fork();
    if (child == 0)
    {
        if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            ::_exit(1);
        ::raise(SIGSTOP);
        work();
        ::_exit(0);
    }
    int status = 0;
    Require(child != -1 && ::waitpid(child, &status, 0) == child && WIFSTOPPED(status));
    Require(::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) == 0);
    return CallsBetweenMarks(child);
}

} // namespace

// With TZ unset, local time asks for the zone's file, which must not happen at each message.
TEST(PosixLogFileTrace, ThousandShortMessagesAreThousandWritesAndNextToNothingElse)
{
    constexpr std::size_t kMostOtherCalls = 20;
    ::unsetenv("TZ");
    const temp_folder_t folder;
    const auto calls = TracedCalls(
        [&folder]
        {
            const auto file = boost::make_shared<posix::posix_log_file_t>(folder / "a.log");
            const logging::log_channel_t channel("test", boost::make_shared<logging::log_t>(file));
            channel.info("Message %1", 0);
            ::syscall(kMark, 0);
            for (int i = 1; i <= 1000; ++i)
                channel.info("Message %1", i);
            ::syscall(kMark, 0);
        });
    EXPECT_EQ(1000, std::count(calls.begin(), calls.end(), SYS_write));
    EXPECT_GE(1000 + kMostOtherCalls, calls.size());
}

TEST(PosixLogFileTrace, LongTextIsAWriteForEach1024Bytes)
{
    const temp_folder_t folder;
    const auto calls = TracedCalls(
        [&folder]
        {
            posix::posix_log_file_t log(folder / "a.log");
            const std::string text(2049, 'a');
            log.write("first\n");
            ::syscall(kMark, 0);
            log.write(text);
            ::syscall(kMark, 0);
        });
    EXPECT_EQ(3, std::count(calls.begin(), calls.end(), SYS_write));
}
