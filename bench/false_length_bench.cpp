// What memory does a length of 1 GiB take that a short record claims, next to reading 1 MiB that is there?
//
// Each is read in a process of its own, whose page faults count.

#include <cstdint>
#include <iostream>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/support/values.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/io/binary_value.h"
#include "nelvo/io/mem_stream.h"

namespace
{

constexpr std::uint32_t kFalseLength = 1U << 30U;
constexpr std::uint32_t kTrueLength = 1U << 20U;
constexpr int kRounds = 5;

template <class Read>
void ReadClaimed(std::uint32_t length, std::size_t size, Read read)
{
    io::plain_mem_stream_t stream;
    io::WriteValue(stream, length);
    stream.GetArray()->resize(sizeof(length) + size);
    stream.GetMemDevice()->SeekAbsolute(0);
    const bool is_short = size < length;
    bool failed = false;
    try
    {
        read(stream);
    }
    catch (const exc::runtime_exc_t&)
    {
        failed = true;
    }
    if (failed != is_short)
        throw std::runtime_error("read what is not there, or not what is");
}

template <class Work>
double PageFaults(Work work)
{
    const pid_t pid = ::fork();
    if (pid == 0)
    {
        work();
        ::_exit(0);
    }
    int status = 0;
    rusage usage = {};
    if (pid == -1 || ::wait4(pid, &status, 0, &usage) != pid || status != 0)
        throw std::runtime_error("no child, or a child that failed");
    return static_cast<double>(usage.ru_minflt);
}

template <class Read>
void AddFigure(values_t& values, const std::string& name, Read read)
{
    const std::string figure = "stream, page faults of 1 GiB that is not there, " + name;
    for (int round = 0; round != values.Rounds(kRounds); ++round)
    {
        values.Add(figure, "ours", PageFaults([&] { ReadClaimed(kFalseLength, 16, read); }), "faults");
        values.Add(figure, "1 MiB that is there|1",
                   PageFaults([&] { ReadClaimed(kTrueLength, kTrueLength, read); }), "faults");
    }
}

} // namespace

int main(int argc, char* argv[])
try
{
    values_t values(argc, argv);
    AddFigure(values, "string", [](io::io_dev_t& stream) { io::ReadString(stream); });
    AddFigure(values, "array", [](io::io_dev_t& stream) { io::ReadArray<cnt::plain_array_t>(stream); });
    AddFigure(values, "secure array",
              [](io::io_dev_t& stream) { io::ReadArray<cnt::secure_array_t>(stream); });
    values.Finish();
    return 0;
}
catch (std::exception& e)
{
    std::cerr << "false_length_bench: " << e.what() << '\n';
    return 1;
}
