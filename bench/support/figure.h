#pragma once

// A figure is one question about cost: the same work done by this library and by others, side by side in one
// run. A source of figures defines AddFigures, and the main function of the benchmarks does the rest.
//
//   void AddFigures()
//   {
//       static const std::string path = "/etc/x";
//       figure_t("a text around a path")
//           .Ours([] { return util::Format("Path: [%1].", path); })
//           .Against("fmt", 0.7, [] { return fmt::format(fmt::runtime("Path: [{}]."), path); })
//           .Against("std::string", [] { return "Path: [" + path + "]."; });
//   }
//
// A work is called over and over, and what it returns counts as used. A goal is the most that our work may
// cost, as a multiple of the other's; without a goal the ratio is only shown. bench/ratios.py reads the
// figures, the parts of their names set apart by |.
//
// Time is the processor's, spent in the thread that calls the work, or in all threads after OfAllThreads.

#include <functional>
#include <string>
#include <utility>

#include <benchmark/benchmark.h>

// Adds the figures of this program.
void AddFigures();

class figure_t
{
public:
    explicit figure_t(std::string name) : m_name(std::move(name)) {}

    // Of the works added from here on.
    figure_t& OfAllThreads()
    {
        m_all_threads = true;
        return *this;
    }

    template <class Work>
    figure_t& Ours(Work work)
    {
        return Add("ours", "", std::move(work));
    }

    template <class Work>
    figure_t& Against(const std::string& other, double goal, Work work)
    {
        return Add(other, GoalText(goal), std::move(work));
    }

    template <class Work>
    figure_t& Against(const std::string& other, Work work)
    {
        return Add(other, "", std::move(work));
    }

private:
    template <class Work>
    figure_t& Add(const std::string& who, const std::string& goal, Work work)
    {
        Register(
            m_name + '|' + who + '|' + goal,
            [work](benchmark::State& state)
            {
                for (auto _ : state)
                    benchmark::DoNotOptimize(work());
            },
            m_all_threads);
        return *this;
    }

    static void Register(const std::string& name, const std::function<void(benchmark::State&)>& loop,
                         bool all_threads);
    static std::string GoalText(double goal);

    std::string m_name;
    bool m_all_threads = false;
};
