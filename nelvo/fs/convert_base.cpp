#include "nelvo/fs/convert_base.h"

#include "nelvo/core/util/numeric_cast.h"

namespace util
{

std::uint64_t ConvertBase(std::uint32_t value, std::uint32_t from, std::uint32_t to)
{
    std::uint64_t result = 0;
    double weight = 1;
    for (; value != 0; value /= from)
    {
        result += NumericCast<std::uint32_t>(value % from * weight);
        weight *= to;
    }
    return result;
}

} // namespace util
