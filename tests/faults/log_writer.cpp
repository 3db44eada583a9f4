// Logs messages, and rotates its log as the tool does but long before 15 MiB:
//
//   log_writer LOG MESSAGES STATE MICROSECONDS COUNT [COMMAND COUNT]...
//
// MESSAGES is a file with a message a line, of which COUNT are logged; then a shell runs COMMAND, and so on.
// After so many microseconds, unless there are 0, the process is killed, wherever it is: it waits for that in
// the end.
//
// STATE is a file of two numbers of 64 bits that outlives the process: how many messages have been logged,
// and how often at most the log's size was looked at during one of them.

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <optional>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include <boost/make_shared.hpp>

#include "nelvo/logging/log.h"
#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/receiver/posix_log_file.h"

namespace
{

struct state_t
{
    volatile std::uint64_t logged;
    volatile std::uint64_t most_looks;
};

void Require(bool good)
{
    if (!good)
        std::_Exit(2);
}

state_t& MapState(const char* path)
{
    const int descriptor = ::open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    Require(descriptor != -1 && ::ftruncate(descriptor, sizeof(state_t)) == 0);
    void* const memory = ::mmap(nullptr, sizeof(state_t), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    Require(memory != MAP_FAILED);
    ::close(descriptor);
    return *static_cast<state_t*>(memory);
}

std::vector<std::string> ReadLines(const char* path)
{
    std::vector<std::string> lines;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

// Passes for a log a thousand times its size.
class small_log_file_t : public posix::posix_log_file_t
{
public:
    small_log_file_t(const std::string& name, std::uint64_t& looks) : posix_log_file_t(name), m_looks(looks)
    {
    }
    std::uint64_t get_size() const override
    {
        ++m_looks;
        return 1000 * posix_log_file_t::get_size();
    }

private:
    std::uint64_t& m_looks;
};

void KillAfter(long microseconds)
{
    sigevent event = {};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGKILL;
    timer_t timer = {};
    const itimerspec time = {{}, {microseconds / 1'000'000, microseconds % 1'000'000 * 1000}};
    Require(::timer_create(CLOCK_MONOTONIC, &event, &timer) == 0 &&
            ::timer_settime(timer, 0, &time, nullptr) == 0);
}

// A shell that is there whatever becomes of this process's means.
class shell_t
{
public:
    shell_t()
    {
        ::sigemptyset(&m_answer);
        ::sigaddset(&m_answer, SIGUSR1);
        ::sigprocmask(SIG_BLOCK, &m_answer, nullptr);
        m_input = ::popen("exec sh", "w");
        Require(m_input != nullptr);
    }
    ~shell_t() { ::pclose(m_input); }
    shell_t(const shell_t&) = delete;
    shell_t& operator=(const shell_t&) = delete;

    void Run(const std::string& command)
    {
        const std::string line = command + "\nkill -s USR1 $PPID\n";
        Require(std::fputs(line.c_str(), m_input) != EOF && std::fflush(m_input) == 0);
        int answer = 0;
        Require(::sigwait(&m_answer, &answer) == 0);
    }

private:
    sigset_t m_answer;
    FILE* m_input;
};

// The receiver counts its looks.
void Log(const logging::log_channel_t& channel, const std::string& message, const std::uint64_t& looks,
         state_t& state)
{
    const std::uint64_t before = looks;
    channel.info(message);
    state.logged = state.logged + 1;
    if (looks - before > state.most_looks)
        state.most_looks = looks - before;
}

} // namespace

int main(int argc, char* argv[])
{
    Require(argc >= 6 && argc % 2 == 0);
    const std::vector<std::string> messages = ReadLines(argv[2]);
    auto message = messages.begin();
    std::optional<shell_t> shell;
    if (argc > 6)
        shell.emplace();
    state_t& state = MapState(argv[3]);
    std::uint64_t looks = 0;
    const auto log = logging::GetProcessLog();
    log->set_receiver(boost::make_shared<small_log_file_t>(argv[1], looks));
    log->set_size_check(true);
    const logging::log_channel_t channel("lines");

    ::geteuid(); // tells the preloaded library to begin
    const long microseconds = std::atol(argv[4]);
    if (microseconds != 0)
        KillAfter(microseconds);
    for (int i = 5; i < argc; i += 2)
    {
        if (i > 5)
            shell->Run(argv[i - 1]);
        for (int count = std::atoi(argv[i]); count != 0 && message != messages.end(); --count)
            Log(channel, *message++, looks, state);
    }
    if (microseconds != 0)
        for (;;)
            ::pause();
}
