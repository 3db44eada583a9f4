#include "bench/support/program.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace
{

char* const* Pointers(const char* const* texts) { return const_cast<char* const*>(texts); }

std::array<const char*, 3> EnvironmentOf(const program_t& program)
{
    return {"PATH=/usr/sbin:/usr/bin:/sbin:/bin", program.lang, nullptr};
}

pid_t Spawn(const program_t& program, const std::string& output)
{
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT, 0600);
    pid_t pid = -1;
    errno = ::posix_spawn(&pid, program.arguments[0], &actions, nullptr, Pointers(program.arguments.data()),
                          Pointers(EnvironmentOf(program).data()));
    CheckCall(errno == 0, program.name);
    ::posix_spawn_file_actions_destroy(&actions);
    return pid;
}

void CheckEnd(const program_t& program, int status)
{
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw std::runtime_error(std::string(program.name) + " failed");
}

rusage Wait(const program_t& program, pid_t pid)
{
    int status = 0;
    rusage usage = {};
    CheckCall(::wait4(pid, &status, 0, &usage) == pid, "wait4");
    CheckEnd(program, status);
    return usage;
}

double Microseconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_usec);
}

// The process stops when the program has started, before its first instruction.
pid_t StartTraced(const program_t& program)
{
    const pid_t pid = ::fork();
    CheckCall(pid != -1, "fork");
    if (pid == 0)
    {
        const int null = ::open("/dev/null", O_WRONLY);
        ::dup2(null, STDOUT_FILENO);
        ::close(null);
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::execve(program.arguments[0], Pointers(program.arguments.data()),
                 Pointers(EnvironmentOf(program).data()));
        ::_exit(127);
    }
    return pid;
}

class tracer_t
{
public:
    tracer_t(const program_t& program, processes_t processes)
        : m_program(program), m_pid(StartTraced(program))
    {
        if (!WIFSTOPPED(NextStatus()))
            throw std::runtime_error(std::string(program.name) + " cannot be traced");
        const int forks = PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_TRACECLONE;
        const int options = PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACEEXIT | PTRACE_O_EXITKILL |
                            (processes == processes_t::kNone ? forks : 0);
        CheckCall(::ptrace(PTRACE_SETOPTIONS, m_pid, nullptr, options) == 0, "PTRACE_SETOPTIONS");
    }

    traced_run_t Run()
    {
        int signal = 0;
        while (true)
        {
            CheckCall(::ptrace(PTRACE_SYSCALL, m_pid, nullptr, signal) == 0, "PTRACE_SYSCALL");
            const int status = NextStatus();
            if (!WIFSTOPPED(status))
            {
                CheckEnd(m_program, status);
                return m_run;
            }
            signal = Look(status);
        }
    }

private:
    int NextStatus() const
    {
        int status = 0;
        CheckCall(::waitpid(m_pid, &status, 0) == m_pid, "waitpid");
        return status;
    }

    // The signal to go on with.
    int Look(int status)
    {
        const int event = status >> 16;
        if (WSTOPSIG(status) == (SIGTRAP | 0x80))
            m_run.system_calls += IsEntry() ? 1 : 0;
        else if (event == PTRACE_EVENT_EXIT)
            m_run.peak_kib = PeakKiB();
        else if (event != 0)
            throw std::runtime_error(std::string(m_program.name) + " has started a process");
        else
            return WSTOPSIG(status);
        return 0;
    }

    // A system call stops where it begins and where it ends.
    bool IsEntry() const
    {
        __ptrace_syscall_info info = {};
        CheckCall(::ptrace(PTRACE_GET_SYSCALL_INFO, m_pid, sizeof(info), &info) > 0,
                  "PTRACE_GET_SYSCALL_INFO");
        return info.op == PTRACE_SYSCALL_INFO_ENTRY;
    }

    // Read while the process stands at its exit: what wait4 tells counts the memory of the process that
    // started it too.
    double PeakKiB() const
    {
        std::ifstream file("/proc/" + std::to_string(m_pid) + "/status");
        std::string word;
        while (file >> word && word != "VmHWM:")
            continue;
        double peak = 0;
        file >> peak;
        return peak;
    }

    const program_t& m_program;
    const pid_t m_pid;
    traced_run_t m_run = {1, 0}; // the execve has begun before
};

} // namespace

cost_t Run(const program_t& program)
{
    const auto begin = std::chrono::steady_clock::now();
    const rusage usage = Wait(program, Spawn(program, "/dev/null"));
    const std::chrono::duration<double, std::micro> wall = std::chrono::steady_clock::now() - begin;
    return {wall.count(), Microseconds(usage.ru_utime) + Microseconds(usage.ru_stime),
            static_cast<double>(usage.ru_minflt + usage.ru_majflt)};
}

traced_run_t RunTraced(const program_t& program, processes_t processes)
{
    return tracer_t(program, processes).Run();
}

std::string OutputOf(const program_t& program)
{
    const std::string path = "output";
    Wait(program, Spawn(program, path));
    std::ostringstream output;
    output << std::ifstream(path, std::ios::binary).rdbuf();
    CheckCall(::unlink(path.c_str()) == 0, path);
    return output.str();
}

void CheckCall(bool good, const std::string& what)
{
    if (!good)
        throw std::system_error(errno, std::generic_category(), what);
}
