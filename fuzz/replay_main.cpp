// Runs a fuzz target as a test does:  NAME_replay [--seeds FOLDER | --cuts FOLDER] [FOLDER | FILE]...
//
// The files of the folder of seeds are run as they are and changed: cut off at every length, with every bit
// turned, with any one and any four bytes 00 and FF, and at several places at random. The inputs are the same
// in each run. Those of a folder of cuts are cut off and nothing else. A file on its own is run as it is, and
// so are the files of another folder.
//
// An input that ends the program is kept as NAME_replay.finding in the current folder, to be run alone.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

#include "fuzz/fuzz_target.h"

// A sanitizer's finding raises a signal, as all others do.
// NOLINTBEGIN(clang-diagnostic-reserved-identifier): the runtimes look for these names.
extern "C" const char* __asan_default_options()
{
    return "abort_on_error=1:check_initialization_order=1:strict_init_order=1:detect_stack_use_after_return=1";
}
extern "C" const char* __tsan_default_options() { return "abort_on_error=1:halt_on_error=1"; }
extern "C" const char* __ubsan_default_options() { return "abort_on_error=1:print_stacktrace=1"; }
// NOLINTEND(clang-diagnostic-reserved-identifier)

namespace
{

using bytes_t = std::vector<std::uint8_t>;

// What the signal handler needs.
const bytes_t* g_input = nullptr;
std::string g_finding;

// The signal is raised again behind this, by whatever raised it.
extern "C" void KeepInput(int)
{
    const int file = ::open(g_finding.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (file < 0 || ::write(file, g_input->data(), g_input->size()) < 0)
        return;
    ::close(file);
}

void KeepInputOfASignal(int signal)
{
    struct sigaction action = {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler != SIG_DFL)
        return; // the sanitizer's, which aborts
    action.sa_handler = KeepInput;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(signal, &action, nullptr);
}

bytes_t FileBytes(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
    {
        std::cerr << "cannot read " << path << '\n';
        std::exit(2);
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The target, and how often it was run.
class target_t
{
public:
    // The bytes end where their memory ends, so that a sanitizer sees each read behind them.
    void Run(bytes_t input)
    {
        input.shrink_to_fit();
        g_input = &input;
        LLVMFuzzerTestOneInput(input.data(), input.size());
        ++m_inputs;
    }

    // The seed cut off at every length, itself included.
    void RunPrefixes(const bytes_t& seed)
    {
        for (auto end = seed.begin(); end != seed.end(); ++end)
            Run({seed.begin(), end});
        Run(seed);
    }

    void RunBitFlips(const bytes_t& seed)
    {
        bytes_t input = seed;
        for (std::size_t bit = 0; bit != seed.size() * 8; ++bit)
        {
            const auto mask = static_cast<std::uint8_t>(1U << bit % 8);
            input[bit / 8] ^= mask;
            Run(input);
            input[bit / 8] ^= mask;
        }
    }

    // What makes lengths and kinds that lie the most.
    void RunExtremes(const bytes_t& seed, std::size_t width)
    {
        for (std::size_t place = 0; place + width <= seed.size(); ++place)
        {
            for (const std::uint8_t value : {std::uint8_t{0x00}, std::uint8_t{0xff}})
            {
                bytes_t input = seed;
                std::fill_n(input.begin() + static_cast<std::ptrdiff_t>(place), width, value);
                Run(input);
            }
        }
    }

    void RunChanged(const bytes_t& seed, const std::vector<bytes_t>& seeds)
    {
        constexpr int kInputs = 200;
        for (int i = 0; i != kInputs; ++i)
        {
            bytes_t input = seed;
            for (std::size_t changes = 1 + Random(6); changes != 0; --changes)
                Change(input, seeds[Random(seeds.size())]);
            Run(input);
        }
    }

    std::size_t GetInputs() const { return m_inputs; }

private:
    // 0 to below - 1.
    std::size_t Random(std::size_t below) { return m_random() % below; }

    void Change(bytes_t& input, const bytes_t& other)
    {
        const std::size_t place = Random(input.size() + 1);
        const std::size_t count = std::min(input.size() - place, 1 + Random(8));
        const auto begin = input.begin() + static_cast<std::ptrdiff_t>(place);
        const auto end = begin + static_cast<std::ptrdiff_t>(count);
        switch (Random(4))
        {
        case 0: input.erase(begin, end); break;
        case 1: input.insert(begin, static_cast<std::uint8_t>(Random(256))); break;
        case 2: std::generate(begin, end, [this] { return static_cast<std::uint8_t>(Random(256)); }); break;
        default: input.insert(begin, other.begin() + Other(other.size()), other.end()); break;
        }
    }

    std::ptrdiff_t Other(std::size_t size) { return static_cast<std::ptrdiff_t>(Random(size + 1)); }

    std::minstd_rand m_random; // the same numbers in each run
    std::size_t m_inputs = 0;
};

std::vector<bytes_t> FilesBytes(const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> paths{std::filesystem::directory_iterator(folder), {}};
    std::sort(paths.begin(), paths.end());
    std::vector<bytes_t> files;
    std::transform(paths.begin(), paths.end(), std::back_inserter(files), FileBytes);
    return files;
}

void RunSeeds(target_t& target, const std::vector<bytes_t>& seeds)
{
    for (const bytes_t& seed : seeds)
    {
        target.RunPrefixes(seed);
        target.RunBitFlips(seed);
        target.RunExtremes(seed, 1);
        target.RunExtremes(seed, 4);
        target.RunChanged(seed, seeds);
    }
}

void RunCuts(target_t& target, const std::vector<bytes_t>& seeds)
{
    for (const bytes_t& seed : seeds)
        target.RunPrefixes(seed);
}

void RunAll(target_t& target, const std::vector<bytes_t>& files)
{
    for (const bytes_t& file : files)
        target.Run(file);
}

} // namespace

int main(int argc, char* argv[])
{
    g_finding = std::filesystem::path(argv[0]).filename().string() + ".finding";
    for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL})
        KeepInputOfASignal(signal);

    target_t target;
    for (char** argument = argv + 1; argument != argv + argc; ++argument)
    {
        if (std::string_view(*argument) == "--seeds" && argument + 1 != argv + argc)
            RunSeeds(target, FilesBytes(*++argument));
        else if (std::string_view(*argument) == "--cuts" && argument + 1 != argv + argc)
            RunCuts(target, FilesBytes(*++argument));
        else if (std::filesystem::is_directory(*argument))
            RunAll(target, FilesBytes(*argument));
        else
            target.Run(FileBytes(*argument));
    }
    std::cout << target.GetInputs() << " inputs\n";
    return target.GetInputs() != 0 ? 0 : 2;
}
