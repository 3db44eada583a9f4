// What memory a false length costs.

#include "nelvo/io/binary_value.h"

#include <string>
#include <sys/resource.h>

#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/golden.h"
#include "tests/support/stub_dev.h"
#include "tests/support/thrown.h"

namespace
{

// What holds the bytes that are there, and what the heap notes about the block.
constexpr long kHandful = 8;

// The pages that the call touches for the first time.
template <class Call>
long PagesTouchedBy(Call call)
{
    rusage before = {};
    rusage after = {};
    ::getrusage(RUSAGE_SELF, &before);
    call();
    ::getrusage(RUSAGE_SELF, &after);
    return after.ru_minflt - before.ru_minflt;
}

// Reading 1 byte where the length says 1 GiB, of 262144 pages. The first such failure has touched the code.
template <class Read>
long PagesOfAFalseLength(Read read)
{
    const auto fail = [read](const std::string& hex)
    {
        stub_dev_t device(Unhex(hex));
        Thrown<exc::runtime_exc_t>([&] { read(device); });
    };
    fail("00 00 01 00 61");
    return PagesTouchedBy([&] { fail("00 00 00 40 61"); });
}

} // namespace

TEST(BinaryValuePages, FalseLengthOfAStringTouchesAHandful)
{
    EXPECT_GT(kHandful, PagesOfAFalseLength([](io::io_dev_t& device) { io::ReadString(device); }));
}

TEST(BinaryValuePages, FalseLengthOfAnArrayTouchesAHandful)
{
    EXPECT_GT(kHandful,
              PagesOfAFalseLength([](io::io_dev_t& device) { io::ReadArray<cnt::plain_array_t>(device); }));
}

TEST(BinaryValuePages, FalseLengthOfASecureArrayTouchesAHandful)
{
    EXPECT_GT(kHandful,
              PagesOfAFalseLength([](io::io_dev_t& device) { io::ReadArray<cnt::secure_array_t>(device); }));
}
