#include "bench/support/figure.h"

#include <sstream>
#include <vector>

void figure_t::Register([[maybe_unused]] const std::string& name,
                        [[maybe_unused]] const std::function<void(benchmark::State&)>& loop,
                        [[maybe_unused]] bool all_threads)
{
// The analyzer does not see that the registry keeps what is registered, and reports a leak.
#ifndef __clang_analyzer__
    benchmark::internal::Benchmark* const figure = benchmark::RegisterBenchmark(name.c_str(), loop);
    if (all_threads)
        figure->MeasureProcessCPUTime();
#endif
}

std::string figure_t::GoalText(double goal)
{
    std::ostringstream text;
    text << goal;
    return text.str();
}

// Repetitions of all figures take turns, so that what else the machine does meets all alike. They are many
// and short, as a neighbour on the same core, who makes all slower by a third, comes and goes within a tenth
// of a second. The caller's own arguments come later and win; --quick, the last one, leaves some out.
int main(int argc, char* argv[])
{
    const bool is_quick = std::string(argv[argc - 1]) == "--quick";
    argc -= is_quick;
    std::string defaults[] = {"--benchmark_enable_random_interleaving=true", "--benchmark_min_time=0.005",
                              is_quick ? "--benchmark_repetitions=21" : "--benchmark_repetitions=33"};
    std::vector<char*> arguments(argv, argv + 1);
    for (std::string& argument : defaults)
        arguments.push_back(argument.data());
    arguments.insert(arguments.end(), argv + 1, argv + argc);

    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 1;
    AddFigures();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
