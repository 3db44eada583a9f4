// What does the rotation of a log of 15 MiB cost, next to a bare loop over zlib and to gzip on the same
// bytes? And that of a log twice as big?
//
// All take turns, each run in a process of its own, whose user and system time counts. All files stand on
// tmpfs.

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <vector>

#include <boost/make_shared.hpp>
#include <zlib.h>

#include "bench/support/bench_folder.h"
#include "bench/support/values.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/receiver/posix_log_file.h"
#include "nelvo/logging/receiver/rotation.h"

namespace
{

namespace fs = std::filesystem;

constexpr int kRounds = 9;
constexpr std::uintmax_t kLogSize = 15728640;
constexpr std::uintmax_t kTwiceTheSize = 2 * kLogSize;
constexpr std::size_t kBufferSize = 1048576;

// Messages as a run of the tool and a copying agent would send them, all with the heads of a real log.
class message_source_t
{
public:
    void Send(const logging::log_channel_t& channel)
    {
        switch (m_random() % 6)
        {
        case 0: channel.info("Looking for existed agentId"); break;
        case 1: channel.detail(logging::at(1), "File [%1] was copied: %2 bytes.", Path(), Number()); break;
        case 2: channel.info("Agent id: {%1-2c1e-4f3a-8a70-%2}", Number(), Number()); break;
        case 3:
            channel.warning("Attempt %1 of %2 has failed.\nNo such file or directory", Number(), 9);
            break;
        case 4: channel.detail("Checking [%1]", Path()); break;
        default: channel.info("Queue: %1 waiting, %2 done, %3 failed", Number(), Number(), 0); break;
        }
    }

private:
    std::uint32_t Number() { return static_cast<std::uint32_t>(m_random()) % 1000000; }

    std::string Path()
    {
        return "/var/lib/nelvo/agent/" + std::to_string(Number() % 100) + "/part-" + std::to_string(Number());
    }

    std::minstd_rand m_random; // the same lines in each run, but for their heads
};

void WriteLines(const std::string& path, std::uintmax_t size)
{
    const auto receiver = boost::make_shared<posix::posix_log_file_t>(path);
    const logging::log_channel_t channel("bench", boost::make_shared<logging::log_t>(receiver));
    message_source_t messages;
    while (receiver->get_size() < size)
        messages.Send(channel);
    fs::resize_file(path, size);
}

void Rotate(const std::string& path)
{
    posix::posix_log_file_t log(path);
    logging::receiver::validate_log_size(log);
}

void CompressByZlib(const std::string& path)
{
    const int file = ::open(path.c_str(), O_RDONLY);
    const gzFile archive = ::gzopen((path + ".gz").c_str(), "wb9");
    std::vector<char> buffer(kBufferSize);
    for (ssize_t count = 0; (count = ::read(file, buffer.data(), buffer.size())) > 0;)
        ::gzwrite(archive, buffer.data(), static_cast<unsigned>(count));
    ::gzclose(archive);
    ::close(file);
}

void CompressByGzip(const std::string& path)
{
    ::execlp("gzip", "gzip", "-9", "--keep", path.c_str(), nullptr);
    throw std::system_error(errno, std::generic_category(), "gzip");
}

struct run_t
{
    const char* figure;
    const char* who;
    void (*compress)(const std::string& path);
    std::uintmax_t log_size;
};

const char kRotation[] = "rotation of a log of 15 MiB";
const char kGrowth[] = "growth: rotation of a log";

constexpr run_t kRuns[] = {
    {kRotation, "ours", Rotate, kLogSize},
    {kRotation, "zlib|1.05", CompressByZlib, kLogSize},
    {kRotation, "gzip -9|0.9", CompressByGzip, kLogSize},
    {kGrowth, "ours", Rotate, kTwiceTheSize},
    {kGrowth, "half the input|2.3", Rotate, kLogSize},
};

[[noreturn]] void RunInChild(const run_t& run, const std::string& path)
{
    int status = 1;
    try
    {
        run.compress(path);
        status = 0;
    }
    catch (std::exception& e)
    {
        std::cerr << "rotation_bench: " << e.what() << '\n';
    }
    ::_exit(status);
}

double Milliseconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

double Run(const run_t& run, const std::string& path)
{
    const pid_t pid = ::fork();
    if (pid == 0)
        RunInChild(run, path);
    int status = 0;
    rusage usage = {};
    if (pid == -1 || ::wait4(pid, &status, 0, &usage) != pid)
        throw std::system_error(errno, std::generic_category(), run.who);
    if (status != 0 || fs::file_size(path + ".gz") == 0)
        throw std::runtime_error(std::string(run.who) + " failed");
    return Milliseconds(usage.ru_utime) + Milliseconds(usage.ru_stime);
}

void RunInTurns(values_t& values)
{
    const bench_folder_t folder;
    const auto lines = [&folder](std::uintmax_t size) { return folder / std::to_string(size); };
    const std::string path = folder / "a.log";
    for (const std::uintmax_t size : {kLogSize, kTwiceTheSize})
        WriteLines(lines(size), size);
    for (int round = 0; round != values.Rounds(kRounds); ++round)
        for (const run_t& run : kRuns)
        {
            fs::copy_file(lines(run.log_size), path, fs::copy_options::overwrite_existing);
            fs::remove(path + ".gz");
            values.Add(run.figure, run.who, Run(run, path), "ms");
        }
}

} // namespace

int main(int argc, char* argv[])
try
{
    values_t values(argc, argv);
    RunInTurns(values);
    values.Finish();
    return 0;
}
catch (std::exception& e)
{
    std::cerr << "rotation_bench: " << e.what() << '\n';
    return 1;
}
