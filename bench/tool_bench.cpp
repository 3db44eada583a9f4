// What does a whole run of the tool cost when it finds its agent file, next to a program that does nothing
// and is linked in the same way, and to cat?
//
// The programs take turns. The run happens in a mount namespace of its own: /etc is a copy on tmpfs, and so
// is the working folder, where the tool keeps its log. Needs root.

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sched.h>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/mount.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "bench/support/values.h"

namespace
{

constexpr int kRounds = 300;
const char kAgentId[] = "{9fd5a6c4-2c1e-4f3a-8a70-9f0d3b6a5e21}";

struct program_t
{
    const char* name;
    std::array<const char*, 3> arguments;
};

const program_t kPrograms[] = {
    {"ours", {NELVO_TOOL, nullptr}},
    {"empty program", {NELVO_EMPTY_PROGRAM, nullptr}},
    {"cat /etc/machine-id", {"/bin/cat", "/etc/machine-id", nullptr}},
};

// What one run costs.
struct cost_t
{
    double wall_us;
    double cpu_us;
    double faults;
};

void Check(bool good, const char* what)
{
    if (!good)
        throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

// The mount namespace, and the folder on tmpfs that all of it stands in.
class own_namespace_t
{
public:
    own_namespace_t()
    {
        Check(::mkdtemp(m_folder.data()) != nullptr, "mkdtemp");
        Check(::unshare(CLONE_NEWNS) == 0, "unshare");
        Check(::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "mount private");
        Check(::mount("tmpfs", m_folder.c_str(), "tmpfs", 0, nullptr) == 0, "mount tmpfs");
        ReplaceEtc(m_folder + "/etc");
        std::filesystem::current_path(m_folder);
    }

    ~own_namespace_t()
    {
        std::error_code ignored;
        std::filesystem::current_path("/", ignored);
        ::umount2(m_folder.c_str(), MNT_DETACH);
        ::rmdir(m_folder.c_str());
    }

    own_namespace_t(const own_namespace_t&) = delete;
    own_namespace_t& operator=(const own_namespace_t&) = delete;

private:
    static void ReplaceEtc(const std::string& etc)
    {
        namespace fs = std::filesystem;
        fs::copy("/etc", etc, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
        std::ofstream(etc + "/nelvoagentid") << kAgentId;
        if (!fs::exists(etc + "/machine-id"))
            std::ofstream(etc + "/machine-id") << "9fd5a6c42c1e4f3a8a709f0d3b6a5e21\n";
        Check(::mount(etc.c_str(), "/etc", nullptr, MS_BIND, nullptr) == 0, "mount /etc");
    }

    std::string m_folder = "/dev/shm/nelvo-bench-XXXXXX";
};

char* const* Arguments(const program_t& program)
{
    return const_cast<char* const*>(program.arguments.data());
}

pid_t Spawn(const program_t& program, const std::string& output)
{
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT, 0600);
    pid_t pid = -1;
    errno = ::posix_spawn(&pid, program.arguments[0], &actions, nullptr, Arguments(program), environ);
    Check(errno == 0, program.name);
    ::posix_spawn_file_actions_destroy(&actions);
    return pid;
}

rusage Wait(const program_t& program, pid_t pid)
{
    int status = 0;
    rusage usage = {};
    Check(::wait4(pid, &status, 0, &usage) == pid, "wait4");
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw std::runtime_error(std::string(program.name) + " failed");
    return usage;
}

double Microseconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_usec);
}

cost_t Run(const program_t& program)
{
    const auto begin = std::chrono::steady_clock::now();
    const rusage usage = Wait(program, Spawn(program, "/dev/null"));
    const std::chrono::duration<double, std::micro> wall = std::chrono::steady_clock::now() - begin;
    return {wall.count(), Microseconds(usage.ru_utime) + Microseconds(usage.ru_stime),
            static_cast<double>(usage.ru_minflt + usage.ru_majflt)};
}

std::vector<cost_t> RunInTurns()
{
    std::vector<cost_t> costs;
    for (int round = 0; round != kRounds; ++round)
        for (const program_t& program : kPrograms)
            costs.push_back(Run(program));
    return costs;
}

void CheckThatTheToolFindsItsFile()
{
    Wait(kPrograms[0], Spawn(kPrograms[0], "id"));
    std::string id;
    std::ifstream("id") >> id;
    if (id != kAgentId)
        throw std::runtime_error("the tool printed " + id);
}

// The peak of resident memory, read while the process stands at its exit: what wait4 tells counts the memory
// of the process that started it too.
double PeakKiB(const program_t& program)
{
    const pid_t pid = ::fork();
    Check(pid != -1, "fork");
    if (pid == 0)
    {
        const int null = ::open("/dev/null", O_WRONLY);
        ::dup2(null, STDOUT_FILENO);
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::execv(program.arguments[0], Arguments(program));
        ::_exit(127);
    }
    int status = 0;
    Check(::waitpid(pid, &status, 0) == pid && WIFSTOPPED(status), "trace");
    Check(::ptrace(PTRACE_SETOPTIONS, pid, nullptr, PTRACE_O_TRACEEXIT | PTRACE_O_EXITKILL) == 0, "trace");
    Check(::ptrace(PTRACE_CONT, pid, nullptr, nullptr) == 0, "trace");
    Check(::waitpid(pid, &status, 0) == pid && status >> 8 == (SIGTRAP | (PTRACE_EVENT_EXIT << 8)), "trace");

    std::ifstream file("/proc/" + std::to_string(pid) + "/status");
    std::string word;
    while (file >> word && word != "VmHWM:")
        continue;
    double peak = 0;
    file >> peak;
    ::ptrace(PTRACE_CONT, pid, nullptr, nullptr);
    Wait(program, pid);
    return peak;
}

void AddAll(values_t& values, const std::vector<cost_t>& costs)
{
    for (std::size_t i = 0; i != costs.size(); ++i)
    {
        const program_t& program = kPrograms[i % std::size(kPrograms)];
        values.Add("wall time", program.name, costs[i].wall_us, "us");
        values.Add("user and system time", program.name, costs[i].cpu_us, "us");
        values.Add("page faults", program.name, costs[i].faults, "");
    }
    for (const program_t& program : kPrograms)
        values.Add("peak memory", program.name, PeakKiB(program), "KiB");
}

} // namespace

int main(int argc, char* argv[])
try
{
    values_t values(argc, argv);
    const own_namespace_t own_namespace;
    CheckThatTheToolFindsItsFile();
    AddAll(values, RunInTurns());
    values.Finish();
    return 0;
}
catch (std::exception& e)
{
    std::cerr << "tool_bench: " << e.what() << '\n';
    return 1;
}
