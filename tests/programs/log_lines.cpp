// Starts the process log at a path and logs from several threads at once:
//
//   log_lines PATH THREADS LINES WIDTH
//
// The lines of a thread are "<thread> <line>", both counted from 0 and padded with dots to the width. Then
// it waits for the end of its standard input, and keeps the log meanwhile.

#include <algorithm>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/receiver/log_start.h"

namespace
{

void Log(int thread, int lines, std::size_t width)
{
    const logging::log_channel_t channel("lines");
    for (int i = 0; i != lines; ++i)
    {
        std::string text = std::to_string(thread) + " " + std::to_string(i);
        text.resize(std::max(text.size(), width), '.');
        channel.info(text);
    }
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 5)
        return 2;
    logging::start_log(argv[1], false, false, true);

    std::vector<std::thread> threads;
    for (int i = 0; i != std::stoi(argv[2]); ++i)
        threads.emplace_back(Log, i, std::stoi(argv[3]), std::stoul(argv[4]));
    for (std::thread& thread : threads)
        thread.join();
    while (std::getchar() != EOF)
    {
    }
}
