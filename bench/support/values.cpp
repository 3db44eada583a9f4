#include "bench/support/values.h"

#include <algorithm>
#include <stdexcept>

values_t::values_t(int argc, char* argv[]) : m_is_quick(argc == 3 && std::string(argv[2]) == "--quick")
{
    const std::string option = "--benchmark_out=";
    if (argc != 2 + m_is_quick || std::string(argv[1]).compare(0, option.size(), option) != 0)
        throw std::runtime_error("usage: " + option + "FILE [--quick]");
    m_out.open(argv[1] + option.size());
    m_out << "{\"benchmarks\": [\n";
}

int values_t::Rounds(int all) const { return m_is_quick ? std::max(all / 5, 3) : all; }

void values_t::Add(const std::string& figure, const std::string& who, double value, const std::string& unit)
{
    const bool has_goal = std::count(who.begin(), who.end(), '|') == 1;
    m_out << m_separator << R"({"run_name": ")" << figure << '|' << who << (has_goal ? "" : "|")
          << R"(", "run_type": "iteration", "cpu_time": )" << value << R"(, "time_unit": ")" << unit << "\"}";
    m_separator = ",\n";
}

void values_t::Finish()
{
    m_out << "\n]}\n" << std::flush;
    if (!m_out)
        throw std::runtime_error("the values could not be written");
}
