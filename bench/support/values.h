#pragma once

// For programs that measure by themselves: writes values in the form that bench/ratios.py reads, which takes
// the median of those with the same names.
//
//   values_t values(argc, argv);
//   values.Add("wall time", "ours", 1.5, "ms");
//   values.Add("wall time", "gzip|0.9", 2.5, "ms");      with a goal
//   values.Finish();

#include <fstream>
#include <string>

class values_t
{
public:
    // The one argument is --benchmark_out=FILE. Throws std::runtime_error for any other.
    values_t(int argc, char* argv[]);

    void Add(const std::string& figure, const std::string& who, double value, const std::string& unit);

    // Throws std::runtime_error if not all could be written.
    void Finish();

private:
    std::ofstream m_out;
    std::string m_separator;
};
