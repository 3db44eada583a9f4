// A line of dmidecode's output.

#include "tool/agent_id.h"

#include "fuzz/fuzz_target.h"

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const std::string_view line = fuzz::Text(data, size);
    const std::string value = ParseDmidecodeLine(std::string(line));
    fuzz::Require(line.find(value) != std::string_view::npos);
}
