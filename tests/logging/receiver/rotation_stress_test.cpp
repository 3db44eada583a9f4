// Many processes that log at once, and what is found of it afterwards.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/gz.h"
#include "tests/support/temp_folder.h"

namespace fs = std::filesystem;

namespace
{

// Fewer lines where each costs many times as much, but wider ones, so that as many bytes are written.
#ifdef NELVO_SANITIZED
constexpr int kScale = 20;
#else
constexpr int kScale = 1;
#endif

constexpr std::size_t kLimit = 15728639;
constexpr int kProcesses = 8;
constexpr int kThreads = 4;

// A program that logs (tests/programs/log_lines.cpp) and holds its log until the object ends.
class logging_process_t
{
public:
    logging_process_t(const std::string& path, int lines, int width)
        : m_pipe(::popen((std::string(LOG_LINES) + " " + path + " " + std::to_string(kThreads) + " " +
                          std::to_string(lines) + " " + std::to_string(width))
                             .c_str(),
                         "w"))
    {
        EXPECT_NE(nullptr, m_pipe);
    }
    ~logging_process_t() { EXPECT_EQ(0, ::pclose(m_pipe)); }
    logging_process_t(const logging_process_t&) = delete;
    logging_process_t& operator=(const logging_process_t&) = delete;

private:
    FILE* m_pipe;
};

// Takes the lines of one process, in the order of its log, and holds each thread's against its count.
class line_counter_t
{
public:
    explicit line_counter_t(int width) : m_width(static_cast<std::size_t>(width)) {}

    void Take(std::string_view lines)
    {
        while (!lines.empty())
        {
            const std::size_t end = std::min(lines.find('\n'), lines.size() - 1);
            if (!IsNext(lines.substr(0, end + 1)))
                m_strange.emplace_back(lines.substr(0, end + 1));
            lines.remove_prefix(end + 1);
        }
    }

    const std::array<int, kThreads>& counts() const { return m_counts; }
    const std::vector<std::string>& strange() const { return m_strange; }

private:
    // Whether it is the next line of one of the threads, whole.
    bool IsNext(std::string_view line)
    {
        constexpr std::size_t kTimeSize = 22;
        constexpr std::string_view kColumn = "> lines  | ";
        const std::size_t column = line.find(kColumn, kTimeSize);
        if (line.front() != '[' || line.substr(kTimeSize, 1) != "<" || column == std::string_view::npos)
            return false;
        const std::string_view text = line.substr(column + kColumn.size());
        const auto thread = static_cast<std::size_t>(text[0] - '0');
        if (thread >= m_counts.size())
            return false;
        std::string expected = std::to_string(thread) + " " + std::to_string(m_counts[thread]);
        expected.resize(std::max(expected.size(), m_width), '.');
        if (text != expected + "\n")
            return false;
        ++m_counts[thread];
        return true;
    }

    std::size_t m_width;
    std::array<int, kThreads> m_counts{};
    std::vector<std::string> m_strange; // lines that are not
};

constexpr std::array<int, kThreads> EachThread(int lines) { return {lines, lines, lines, lines}; }

void WaitForFile(const std::string& path)
{
    while (!fs::exists(path))
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

} // namespace

TEST(LogStress, EachLineStandsOnceInTheLogOrTheArchivesOfItsProcess)
{
    constexpr int kLines = 100'000 / kScale;
    constexpr int kWidth = 40 * kScale;
    const temp_folder_t folder;
    {
        std::vector<std::unique_ptr<logging_process_t>> processes;
        for (int i = 0; i != kProcesses; ++i)
            processes.push_back(
                std::make_unique<logging_process_t>(folder / std::to_string(i) + ".log", kLines, kWidth));
    }
    for (int i = 0; i != kProcesses; ++i)
    {
        const std::string name = folder / std::to_string(i);
        line_counter_t counter(kWidth);
        for (int age = 10; age >= 1; --age)
        {
            const std::string archive = name + "." + std::to_string(age) + ".log.gz";
            if (fs::exists(archive))
                counter.Take(Unpack(archive));
        }
        ASSERT_TRUE(fs::exists(name + ".log.gz")) << "nothing was rotated";
        counter.Take(Unpack(name + ".log.gz"));
        counter.Take(ReadFile(name + ".log"));

        EXPECT_EQ(EachThread(kLines), counter.counts()) << i;
        EXPECT_THAT(counter.strange(), testing::IsEmpty()) << i;
    }
}

TEST(LogStress, ProcessesOnOneNameGetALogEach)
{
    constexpr int kLines = 20'000 / kScale;
    constexpr int kWidth = 40;
    const temp_folder_t folder;
    {
        std::vector<std::unique_ptr<logging_process_t>> processes;
        for (int i = 0; i != kProcesses; ++i)
            processes.push_back(std::make_unique<logging_process_t>(folder / "a.log", kLines, kWidth));
        WaitForFile(folder / "a.7.log"); // from then on none gets the log of another
    }
    for (int i = 0; i != kProcesses; ++i)
    {
        const std::string name = folder / (i == 0 ? "a.log" : "a." + std::to_string(i) + ".log");
        EXPECT_GT(kLimit, fs::file_size(name));
        line_counter_t counter(kWidth);
        counter.Take(ReadFile(name));

        EXPECT_EQ(EachThread(kLines), counter.counts()) << name;
        EXPECT_THAT(counter.strange(), testing::IsEmpty()) << name;
    }
    EXPECT_EQ(kProcesses, std::distance(fs::directory_iterator(folder.path()), {}));
}
