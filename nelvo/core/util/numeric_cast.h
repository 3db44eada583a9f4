#pragma once

// A cast to a whole-number type that never changes the value.
//
//   util::NumericCast<std::uint16_t>(2024)     2024
//   util::NumericCast<std::uint16_t>(70000)    throws "Unable to cast value from [i] to [t]."

#include <cmath>
#include <limits>
#include <type_traits>
#include <typeinfo>

#include "nelvo/core/exc/runtime_exc.h"

namespace util
{

// Whether the value is a whole number in the range of Target. Not a number is not.
template <class Target, class Source>
bool FitsInto(Source value)
{
    static_assert(std::is_integral_v<Target> && std::is_arithmetic_v<Source>);
    using limits_t = std::numeric_limits<Target>;
    if constexpr (std::is_floating_point_v<Source>)
    {
        // The number above the largest one: a power of two, hence exact.
        constexpr Target kHalf = limits_t::max() / 2 + 1;
        constexpr Source kEnd = static_cast<Source>(kHalf) * 2;
        constexpr Source kBegin = limits_t::is_signed ? -kEnd : 0;
        return value >= kBegin && value < kEnd && std::trunc(value) == value;
    }
    else if constexpr (std::is_signed_v<Source> == std::is_signed_v<Target>)
    {
        return value >= limits_t::min() && value <= limits_t::max();
    }
    else if constexpr (std::is_signed_v<Source>)
    {
        return value >= 0 && static_cast<std::make_unsigned_t<Source>>(value) <= limits_t::max();
    }
    else
    {
        return value <= static_cast<std::make_unsigned_t<Target>>(limits_t::max());
    }
}

// The value in the type Target. A value that doesn't fit throws exc::runtime_exc_t, with the names of both
// types as the compiler mangles them.
template <class Target, class Source>
Target NumericCast(Source value)
{
    if (!FitsInto<Target>(value))
        throw exc::runtime_exc_t("Unable to cast value from [%1] to [%2].", typeid(Source).name(),
                                 typeid(Target).name());
    return static_cast<Target>(value);
}

} // namespace util
