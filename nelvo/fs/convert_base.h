#pragma once

// File modes as they are spoken: 0755 is held as the decimal number 755.
//
//   util::ConvertBase(493, 8, 10)     755, the mode's octal digits as a decimal number
//   util::ConvertBase(755, 10, 8)     493, which is 0755

#include <cstdint>

namespace util
{

// The sum of the value's digits in base from, each times to raised to the digit's position. A digit is not
// tested against base to: (789, 10, 8) is 7 * 64 + 8 * 8 + 9. Both bases are at least 2.
// Kept: ConvertBase.DigitBeyondTheTargetBaseCounts
//
// Each product must fit into 32 bits, and throws exc::runtime_exc_t with "Unable to cast value from [d] to
// [j]." if it does not; their sum may be larger.
std::uint64_t ConvertBase(std::uint32_t value, std::uint32_t from, std::uint32_t to);

} // namespace util
