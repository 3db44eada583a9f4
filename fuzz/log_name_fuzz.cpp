// Packed names of logs.

#include "nelvo/core/util/log_name.h"

#include "fuzz/fuzz_target.h"

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = fuzz::Text(data, size);
    fuzz::Require(util::UnpackLogName(util::PackLogName(text)) == text);
    fuzz::Reads([&] { fuzz::Require(util::UnpackLogName(text).size() <= text.size()); });
    fuzz::Reads([&] { util::UnpackLogName(fuzz::WideText(data, size)); });
}
