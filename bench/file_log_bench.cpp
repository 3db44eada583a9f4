// What does a message cost in a file log, next to a bare write of the same bytes and to other libraries?
//
// All files stand on tmpfs and are emptied before they get big. TZ is unset, as it is on most machines; a TZ
// would hide what breaking down the time costs.

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/thread/mutex.hpp>
#include <boost/thread/recursive_mutex.hpp>

#include "bench/support/bench_folder.h"
#include "bench/support/figure.h"
#include "bench/support/log_peers.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/receiver/posix_log_file.h"

namespace
{

const char kText[] = "Agent id: {9fd5a6c4-2c1e-4f3a-8a70-9f0d3b6a5e21}";
const char kThreeLines[] = "Unable to read agent id.\n"
                           "No such file or directory\n"
                           "POSIX: Failed to open file [/etc/nelvoagentid].";
const char kPattern[] = "File [%1] was copied: %2 bytes, attempt %3.";
const char kPath[] = "/var/lib/nelvo/agent/state.bin";

constexpr int kThreads = 4;
constexpr int kMessagesEach = 5000;

// Whoever writes the file, it is emptied after so many calls, which are less than a few mebibytes.
class emptied_file_t
{
public:
    explicit emptied_file_t(const std::string& name) : m_path(Folder() / name) {}

    const std::string& GetPath() const { return m_path; }

    int CountCall(int calls = 1)
    {
        constexpr int kMostCalls = 10000;
        if ((m_calls += calls) < kMostCalls)
            return m_calls;
        m_calls = 0;
        std::filesystem::resize_file(m_path, 0);
        return 0;
    }

private:
    static const bench_folder_t& Folder()
    {
        static const bench_folder_t folder;
        return folder;
    }

    std::string m_path;
    int m_calls = 0;
};

class our_log_t
{
public:
    explicit our_log_t(const std::string& name)
        : m_file(name),
          m_channel("bench", boost::make_shared<logging::log_t>(
                                 boost::make_shared<posix::posix_log_file_t>(m_file.GetPath())))
    {
    }

    const logging::log_channel_t& GetChannel() const { return m_channel; }
    emptied_file_t& GetFile() { return m_file; }

private:
    emptied_file_t m_file;
    logging::log_channel_t m_channel;
};

// A file under locks of the kinds that a log and the counting of its writes have.
class bare_file_t
{
public:
    bare_file_t(const std::string& name, std::string bytes)
        : m_file(name),
          m_bytes(std::move(bytes)),
          m_descriptor(::open(m_file.GetPath().c_str(), O_CREAT | O_WRONLY, 0600))
    {
    }
    bare_file_t(const bare_file_t&) = delete;
    bare_file_t& operator=(const bare_file_t&) = delete;
    ~bare_file_t() { ::close(m_descriptor); }

    void Write() const
    {
        if (::write(m_descriptor, m_bytes.data(), m_bytes.size()) != static_cast<ssize_t>(m_bytes.size()))
            std::abort();
    }

    void WriteLocked()
    {
        const std::lock_guard<boost::recursive_mutex> lock(m_mutex);
        TakeCounterLock();
        Write();
        TakeCounterLock();
    }

    emptied_file_t& GetFile() { return m_file; }

private:
    void TakeCounterLock() { const std::lock_guard<boost::mutex> lock(m_counter_mutex); }

    emptied_file_t m_file;
    std::string m_bytes;
    int m_descriptor;
    boost::recursive_mutex m_mutex;
    boost::mutex m_counter_mutex;
};

// What a message looks like in the file.
template <class Message>
std::string BytesOf(Message message)
{
    our_log_t log("bytes");
    message(log.GetChannel());
    std::ostringstream bytes;
    bytes << std::ifstream(log.GetFile().GetPath()).rdbuf();
    std::filesystem::remove(log.GetFile().GetPath());
    if (bytes.str().empty())
        throw std::runtime_error("the log wrote nothing");
    return bytes.str();
}

// Adds a figure: the message against a bare write. Gives it back for others to be compared with.
template <class Message>
figure_t AddMessage(const std::string& name, double goal, Message message)
{
    const auto ours = std::make_shared<our_log_t>(name);
    const auto bare = std::make_shared<bare_file_t>(name + ", write", BytesOf(message));
    return figure_t(name)
        .Ours(
            [ours, message]
            {
                message(ours->GetChannel());
                return ours->GetFile().CountCall();
            })
        .Against("write", goal,
                 [bare]
                 {
                     bare->Write();
                     return bare->GetFile().CountCall();
                 });
}

auto PeerWork(peer_t (*peer)(const std::string&), const std::string& name)
{
    const auto file = std::make_shared<emptied_file_t>(name);
    return [file, log = peer(file->GetPath())]
    {
        static const std::string text = kText;
        log(text);
        return file->CountCall();
    };
}

void AddOneLine()
{
    constexpr double kWriteGoal = 1.45;
    constexpr double kSpdlogGoal = 1;
    constexpr double kLog4cplusGoal = 0.7;
    constexpr double kBoostGoal = 0.6;
    constexpr double kPocoGoal = 0.35;
    constexpr double kGlogGoal = 0.35;
    AddMessage("file log, message of one line", kWriteGoal,
               [](const logging::log_channel_t& channel) { channel.info(kText); })
        .Against("spdlog", kSpdlogGoal, PeerWork(SpdlogTo, "spdlog"))
        .Against("log4cplus", kLog4cplusGoal, PeerWork(Log4cplusTo, "log4cplus"))
        .Against("Boost.Log", kBoostGoal, PeerWork(BoostLogTo, "boost"))
        .Against("POCO", kPocoGoal, PeerWork(PocoTo, "poco"))
        .Against("glog", kGlogGoal, PeerWork(GlogTo, "glog"));
}

void AddThreeLines()
{
    constexpr double kGoal = 1.55;
    AddMessage("file log, message of three lines", kGoal,
               [](const logging::log_channel_t& channel) { channel.info(kThreeLines); });
}

void AddThreeArguments()
{
    constexpr double kGoal = 1.65;
    AddMessage("file log, message with three arguments", kGoal,
               [](const logging::log_channel_t& channel) { channel.info(kPattern, kPath, 1048576, 3); });
}

template <class Work>
void InThreads(Work work)
{
    std::vector<std::thread> threads;
    for (int i = 0; i != kThreads; ++i)
        threads.emplace_back(
            [work]
            {
                for (int k = 0; k != kMessagesEach; ++k)
                    work();
            });
    for (std::thread& thread : threads)
        thread.join();
}

void AddThreads()
{
    constexpr double kGoal = 1.5;
    const auto ours = std::make_shared<our_log_t>("threads");
    const auto bare = std::make_shared<bare_file_t>(
        "threads, write", BytesOf([](const logging::log_channel_t& channel) { channel.info(kText); }));
    figure_t("file log, 20,000 messages of 4 threads")
        .OfAllThreads()
        .Ours(
            [ours]
            {
                InThreads([&log = *ours] { log.GetChannel().info(kText); });
                return ours->GetFile().CountCall(kThreads * kMessagesEach);
            })
        .Against("locks and write", kGoal,
                 [bare]
                 {
                     InThreads([&file = *bare] { file.WriteLocked(); });
                     return bare->GetFile().CountCall(kThreads * kMessagesEach);
                 });
}

} // namespace

void AddFigures()
{
    ::unsetenv("TZ");
    AddOneLine();
    AddThreeLines();
    AddThreeArguments();
    AddThreads();
}
