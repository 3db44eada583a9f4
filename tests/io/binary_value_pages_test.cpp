// What memory a false length costs.

#include "nelvo/io/binary_value.h"

#include <stdexcept>
#include <string>
#include <sys/resource.h>

#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/golden.h"
#include "tests/support/most_memory.h"
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

// Delivers the length of 1 GiB and throws behind the first byte.
class breaking_dev_t : public io::io_dev_t
{
public:
    std::uint64_t write(const void*, std::uint64_t) override { return 0; }
    std::uint64_t read(void* buffer, std::uint64_t count) override
    {
        if (count == 4)
            return Unhex("00 00 00 40").copy(static_cast<char*>(buffer), 4);
        *static_cast<char*>(buffer) = 'a';
        throw std::runtime_error("no line");
    }
};

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

TEST(BinaryValuePages, SecureArrayOfADeviceThatThrowsTakesNoMemoryForItsLength)
{
    constexpr long kMebibyte = 1024;
    breaking_dev_t device;
    const long before = MostMemory();
    EXPECT_EQ("no line", Thrown<std::runtime_error>([&] { io::ReadArray<cnt::secure_array_t>(device); }));
    EXPECT_GT(kMebibyte, MostMemory() - before);
}
