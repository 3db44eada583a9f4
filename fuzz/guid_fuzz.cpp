// Text to GUID. Bad text is the null one.

#include "nelvo/core/guid.h"

#include "fuzz/fuzz_target.h"

namespace
{

bool IsRead(const Guid& value)
{
    return Guid::Parse(value.ToString()) == value && Guid::Parse(value.ToWString()) == value;
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = fuzz::Text(data, size);
    const Guid value = Guid::Parse(text);
    fuzz::Require(IsRead(value) && IsRead(SwapGuidByteOrder(value)));
    if (text.find('\0') == std::string_view::npos)
        fuzz::Reads([&] { fuzz::Require(Guid::Parse(fuzz::Widened(text)) == value); });
    fuzz::Reads([&] { Guid::Parse(fuzz::WideText(data, size)); });
    fuzz::Reads([&] { fuzz::Require(IsRead(Guid::FromBytes(data, size))); });
}
