// How much memory does a small message touch that is the first in its process to go through a flat writer,
// and a text whose length is a lie?
//
// Each work is done in a process of its own, which tells the page faults by its exit status.

#include <algorithm>
#include <iostream>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <boost/make_shared.hpp>

#include "bench/support/values.h"
#include "nelvo/core/cnt/buf_reader.h"
#include "nelvo/core/cnt/buf_writer.h"

namespace
{

constexpr int kRounds = 21;

// Keeps the compiler from leaving out what made the memory.
void Use(const void* memory) { asm volatile("" : : "r"(memory) : "memory"); }

void WriteMessage()
{
    cnt::CBufWriter writer;
    writer.WriteInt32(1);
    writer.WriteString("a small message");
    Use(writer.GetBuffer()->data());
}

void FillMebibyte()
{
    const std::vector<char> bytes(1048576);
    Use(bytes.data());
}

// The bytes of a length and nothing behind it.
void ReadText(const char* length, std::size_t size)
try
{
    CBufReader reader(boost::make_shared<cnt::plain_array_t>(length, size));
    Use(reader.ReadString().data());
}
catch (std::exception&)
{
    return;
}

void ReadFalseLength() { ReadText("\x00\x00\x40\x1f", 4); }

void ReadCutLength() { ReadText("\x00\x00", 2); }

struct work_t
{
    const char* name;
    void (*work)();
};

constexpr work_t kWorks[] = {
    {"message", WriteMessage},
    {"mebibyte", FillMebibyte},
    {"false length", ReadFalseLength},
    {"cut length", ReadCutLength},
};

long Faults()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt + usage.ru_majflt;
}

// In the process of its own.
int FaultsOf(const std::string& name)
{
    for (const auto& [work_name, work] : kWorks)
        if (work_name == name)
        {
            const long before = Faults();
            work();
            return static_cast<int>(std::min(Faults() - before, 254L));
        }
    return 255;
}

double FaultsInAProcessOf(std::string name)
{
    std::string program = "/proc/self/exe";
    char* const arguments[] = {program.data(), name.data(), nullptr};
    pid_t pid = -1;
    int status = 0;
    if (::posix_spawn(&pid, program.c_str(), nullptr, nullptr, arguments, environ) != 0 ||
        ::waitpid(pid, &status, 0) != pid || !WIFEXITED(status) || WEXITSTATUS(status) == 255)
        throw std::runtime_error(name + " failed");
    return WEXITSTATUS(status);
}

} // namespace

int main(int argc, char* argv[])
try
{
    if (argc == 2 && argv[1][0] != '-')
        return FaultsOf(argv[1]);

    values_t values(argc, argv);
    for (int round = 0; round != values.Rounds(kRounds); ++round)
    {
        const double mebibyte = FaultsInAProcessOf("mebibyte");
        const std::string message = "flat buffer, page faults of the first small message";
        values.Add(message, "ours", FaultsInAProcessOf("message"), "");
        values.Add(message, "eight|1", 8, "");
        values.Add(message, "a MiB of zeros", mebibyte, "");

        const std::string length = "flat buffer, page faults of a text with a false length of 500 MiB";
        values.Add(length, "ours", FaultsInAProcessOf("false length"), "");
        values.Add(length, "a length cut short", FaultsInAProcessOf("cut length"), "");
        values.Add(length, "a MiB of zeros|0.1", mebibyte, "");
    }
    values.Finish();
    return 0;
}
catch (std::exception& e)
{
    std::cerr << "buffer_memory_bench: " << e.what() << '\n';
    return 1;
}
