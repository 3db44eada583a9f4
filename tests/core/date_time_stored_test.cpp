#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "nelvo/core/date_time.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/io/mem_stream.h"
#include "tests/support/golden.h"
#include "tests/support/stub_dev.h"
#include "tests/support/thrown.h"

using datetime::CDateTime;

namespace
{

constexpr std::int64_t kUtcSeconds = 1709251198;    // 29 February 2024 23:59:58
constexpr std::int64_t kLocalSeconds = -1219852250; // 7 May 1931 08:09:10

template <class Call>
std::string FailureOf(Call call)
{
    return Thrown<exc::runtime_exc_t>(call);
}

void ExpectValue(std::int64_t seconds, bool is_utc, const CDateTime& value)
{
    EXPECT_EQ(seconds, value.GetSeconds());
    EXPECT_EQ(is_utc, value.IsUtc());
}

std::string Stored(const CDateTime& value)
{
    stub_dev_t device;
    value.Serialize(device);
    return Hex(device.written());
}

CDateTime Read(const std::string& bytes)
{
    stub_dev_t device(bytes);
    CDateTime value;
    value.DeSerialize(device);
    return value;
}

// "written less bytes (3) than expected (4)." for 3 bytes, "... (1) than expected (8)." for 5.
std::string Shortness(std::size_t size)
{
    const std::string count = std::to_string(size < 4 ? size : size - 4);
    return "less bytes (" + count + ") than expected (" + (size < 4 ? "4" : "8") + ").\n";
}

} // namespace

TEST(DateTimeStored, IsTheFlagInFourBytesAndTheSecondsInEight)
{
    EXPECT_EQ(Hex(Golden("date_time_utc")), Stored(CDateTime(kUtcSeconds, true)));
    EXPECT_EQ(Hex(Golden("date_time_local")), Stored(CDateTime(kLocalSeconds, false)));
}

TEST(DateTimeStored, IsReadBack)
{
    ExpectValue(kUtcSeconds, true, Read(Golden("date_time_utc")));
    ExpectValue(kLocalSeconds, false, Read(Golden("date_time_local")));
}

TEST(DateTimeStored, TakesTwelveBytesOfAStream)
{
    io::plain_mem_stream_t stream;
    for (const std::int64_t seconds :
         {std::numeric_limits<std::int64_t>::min(), std::int64_t{0}, kUtcSeconds})
        CDateTime(seconds, seconds == 0).Serialize(stream);
    EXPECT_EQ(36u, stream.GetArray()->size());

    stream.GetMemDevice()->SeekAbsolute(0);
    for (const std::int64_t seconds :
         {std::numeric_limits<std::int64_t>::min(), std::int64_t{0}, kUtcSeconds})
    {
        CDateTime value(1, seconds != 0);
        value.DeSerialize(stream);
        ExpectValue(seconds, seconds == 0, value);
    }
    EXPECT_EQ(0u, stream.GetRemaining());
}

TEST(DateTimeStored, AnyFlagButZeroIsTrue)
{
    for (const char* const flag : {"07 00 00 00", "00 01 00 00", "00 00 00 80", "ff ff ff ff"})
    {
        const CDateTime value = Read(Unhex(std::string(flag) + "05 00 00 00 00 00 00 00"));
        ExpectValue(5, true, value);
        EXPECT_EQ("01 00 00 00 05 00 00 00 00 00 00 00", Stored(value));
    }
}

TEST(DateTimeStored, CutOffIsAFailureThatChangesNothing)
{
    for (const std::string& prefix : Prefixes(Golden("date_time_utc")))
    {
        stub_dev_t device(prefix);
        CDateTime value(4711, false);
        EXPECT_EQ("Failed to retrieve value from the binary stream: received " + Shortness(prefix.size()) +
                      "CDateTime::DeSerialize: Can't deserialize data.",
                  FailureOf([&] { value.DeSerialize(device); }));
        ExpectValue(4711, false, value);
    }
}

TEST(DateTimeStored, DeviceThatTakesTooLittleIsAFailure)
{
    for (std::size_t size = 0; size != 12; ++size)
    {
        stub_dev_t device;
        device.TakeOnly(size < 4 ? size : size - 4, size < 4 ? 0 : 1);
        EXPECT_EQ("Failed to write value to the binary stream: written " + Shortness(size) +
                      "CDateTime::Serialize: Can't serialize data.",
                  FailureOf([&] { CDateTime(kUtcSeconds, true).Serialize(device); }));
    }
}

TEST(DateTimeStored, FailureOfTheDeviceGetsTheContext)
{
    stub_dev_t device;
    device.Fail("no write");
    device.Fail("no read", 1);
    CDateTime value(4711, false);
    EXPECT_EQ("no write\nCDateTime::Serialize: Can't serialize data.",
              FailureOf([&] { value.Serialize(device); }));
    EXPECT_EQ("no read\nCDateTime::DeSerialize: Can't deserialize data.",
              FailureOf([&] { value.DeSerialize(device); }));
    ExpectValue(4711, false, value);
}

TEST(DateTimeStored, AnyBitFlipIsAnotherValue)
{
    const std::vector<std::string> flips = BitFlips(Golden("date_time_local"));
    ASSERT_EQ(96u, flips.size());
    for (std::size_t bit = 0; bit != flips.size(); ++bit)
    {
        const std::int64_t flipped = bit < 32 ? 0 : static_cast<std::int64_t>(std::uint64_t{1} << (bit - 32));
        ExpectValue(kLocalSeconds ^ flipped, bit < 32, Read(flips[bit]));
    }
}
