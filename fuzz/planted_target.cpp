// A target with findings of every kind, by which replay_test.py sees that they are found.

#include <stdexcept>

#include "fuzz/fuzz_target.h"
#include "nelvo/core/cnt/array.h"
#include "nelvo/core/exc/runtime_exc.h"

namespace
{

// The optimiser leaves out memory that nobody looks at.
const void* volatile g_looked_at = nullptr;

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t kTooMuch = (std::size_t{1} << 20U) + 1;
    static const char kZeros[kTooMuch] = {};
    const std::string_view text = Text(data, size);
    if (text == "ours")
        Require(!Reads([] { throw exc::runtime_exc_t(); }));
    if (text == "memory")
        Require(!Reads([] { g_looked_at = std::string(kTooMuch, ' ').data(); }) &&
                !Reads([] { g_looked_at = cnt::plain_array_t{kTooMuch}.data(); }) &&
                !Reads([] { g_looked_at = cnt::plain_array_t(kZeros, kTooMuch).data(); }));
    if (text == "foreign")
        Reads([] { throw std::logic_error("foreign"); });
    Require(text != "broken" && text != std::string_view("zero\0\0\0\0", 8));
}
