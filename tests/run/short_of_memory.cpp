// Runs the tool's run sequence in child processes, until one needs no allocation after the one that finds no
// memory: the first allocation in the first child, the second in the next, and so on. Prints what the agent
// file has been found to be after a run, without repetition and sorted: "absent" or its size.

#include <exception>
#include <fcntl.h>
#include <iostream>
#include <set>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/failing_memory.h"
#include "tool/agent_id.h"

namespace
{

const char kAgentFile[] = "/etc/nelvoagentid";

// The child's status: 0 if it had all the memory that it asked for.
[[noreturn]] void RunInChild(std::size_t allocation, int argc, char* argv[])
{
    const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(null, STDOUT_FILENO);
    FailNextAllocation(allocation);
    try
    {
        RunAgentIdTool(argc, argv);
    }
    catch (std::exception&)
    {
        // Most runs fail. What counts is the file.
    }
    ::_exit(HasAllocationFailed() ? 1 : 0);
}

bool HadAllMemory(std::size_t allocation, int argc, char* argv[])
{
    const pid_t child = ::fork();
    if (child == 0)
        RunInChild(allocation, argc, argv);
    int status = 0;
    ::waitpid(child, &status, 0);
    return status == 0;
}

std::string AgentFile()
{
    struct stat info = {};
    return ::stat(kAgentFile, &info) == 0 ? std::to_string(info.st_size) : "absent";
}

} // namespace

int main(int argc, char* argv[])
{
    std::set<std::string> states;
    bool had_all = false;
    for (std::size_t allocation = 0; !had_all; ++allocation)
    {
        ::unlink(kAgentFile);
        had_all = HadAllMemory(allocation, argc, argv);
        states.insert(AgentFile());
    }
    for (const std::string& state : states)
        std::cout << state << '\n';
    return 0;
}
