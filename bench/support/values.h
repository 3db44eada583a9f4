#pragma once

// For programs that measure by themselves: writes values in the form that bench/ratios.py reads, which takes
// the median of those with the same names.
//
//   values_t values(argc, argv);
//   for (int round = 0; round != values.Rounds(9); ++round)
//   {
//       values.Add("wall time", "ours", 1.5, "ms");
//       values.Add("wall time", "gzip|0.9", 2.5, "ms");      with a goal
//   }
//   values.Finish();

#include <fstream>
#include <string>

class values_t
{
public:
    // The arguments are --benchmark_out=FILE and, behind it, --quick or none. Throws std::runtime_error for
    // any other.
    values_t(int argc, char* argv[]);

    // How often to measure where `all` rounds are worth their time: a fifth of them, and at least three, if
    // it has to be quick.
    int Rounds(int all) const;

    void Add(const std::string& figure, const std::string& who, double value, const std::string& unit);

    // Throws std::runtime_error if not all could be written.
    void Finish();

private:
    std::ofstream m_out;
    std::string m_separator;
    bool m_is_quick;
};
