#include "nelvo/io/binary_value.h"

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/golden.h"
#include "tests/support/stub_dev.h"
#include "tests/support/thrown.h"

namespace
{

using calls_t = std::vector<std::string>;

enum class wide_enum_t : std::uint32_t
{
};
enum class narrow_enum_t : std::uint8_t
{
};
enum class huge_enum_t : std::uint64_t
{
};

constexpr std::uint32_t kNumber = 0x01020304;
constexpr std::uint64_t kLongNumber = 0x0102030405060708;

const std::string kZeroInside("ab\0c", 4);

// The highest bytes of the lengths in stream_values.hex. A bit that is turned there makes gibibytes of one,
// which is asked for in any case: hostile lengths have cases of their own, and a sanitizer or memcheck takes
// minutes to mark that much.
constexpr std::array<std::size_t, 6> kHighBytesOfLengths = {61, 69, 81, 89, 95, 102};

template <class Array>
std::string Text(const Array& bytes)
{
    return std::string(bytes.begin(), bytes.end());
}

// What writing leaves on the device.
template <class Write>
std::string Written(Write write)
{
    stub_dev_t device;
    write(device);
    return Hex(device.written());
}

template <class Value>
std::string WrittenValue(Value value)
{
    return Written([value](io::io_dev_t& device) { io::WriteValue(device, value); });
}

template <class Value>
Value ReadValueFrom(const std::string& hex)
{
    stub_dev_t device(Unhex(hex));
    return io::ReadValue<Value>(device);
}

template <class Call>
std::string Failure(Call call)
{
    return Thrown<exc::runtime_exc_t>(call);
}

std::string ShortRead(const std::string& received, const std::string& expected)
{
    return "Failed to retrieve value from the binary stream: received less bytes (" + received +
           ") than expected (" + expected + ").";
}

std::string ShortString(const std::string& received, const std::string& expected)
{
    return "Failed to retrieve string from the IO device: received less bytes (" + received +
           ") than expected (" + expected + ").";
}

// One value of each kind, as in stream_values.hex.
struct values_t
{
    std::int8_t int8 = -2;
    std::uint8_t uint8 = 128;
    std::int32_t int32 = -2;
    std::uint32_t uint32 = kNumber;
    std::int64_t int64 = -2;
    std::uint64_t uint64 = kLongNumber;
    wide_enum_t wide_enum{kNumber};
    narrow_enum_t narrow_enum{7};
    bool yes = true;
    bool no = false;
    std::optional<std::uint64_t> absent;
    std::optional<std::uint64_t> present = kLongNumber;
    std::string string = kZeroInside;
    std::string empty_string;
    std::optional<std::string> absent_string;
    std::optional<std::string> empty_optional_string = std::string();
    std::optional<std::string> optional_string = "\xc3\xa4";
    cnt::plain_array_t array = {"\xff\x00\x7f", 3};
    cnt::secure_array_t empty_array;
    std::vector<std::int32_t> sequence = {5, 6};
};

void Write(io::io_dev_t& stream, const values_t& values)
{
    io::WriteValue(stream, values.int8);
    io::WriteValue(stream, values.uint8);
    io::WriteValue(stream, values.int32);
    io::WriteValue(stream, values.uint32);
    io::WriteValue(stream, values.int64);
    io::WriteValue(stream, values.uint64);
    io::WriteValue(stream, values.wide_enum);
    io::WriteValue(stream, values.narrow_enum);
    io::WriteValue(stream, values.yes);
    io::WriteValue(stream, values.no);
    io::WriteOptionalValue(stream, values.absent);
    io::WriteOptionalValue(stream, values.present);
    io::WriteString(stream, values.string);
    io::WriteString(stream, values.empty_string);
    io::WriteOptionalString(stream, values.absent_string);
    io::WriteOptionalString(stream, values.empty_optional_string);
    io::WriteOptionalString(stream, values.optional_string);
    io::WriteArray(stream, values.array);
    io::WriteArray(stream, values.empty_array);
    io::WriteValue(stream, static_cast<std::uint32_t>(values.sequence.size()));
    for (const std::int32_t element : values.sequence)
        io::WriteValue(stream, element);
}

values_t Read(const std::string& bytes)
{
    stub_dev_t stream(bytes);
    values_t values;
    values.int8 = io::ReadValue<std::int8_t>(stream);
    values.uint8 = io::ReadValue<std::uint8_t>(stream);
    values.int32 = io::ReadValue<std::int32_t>(stream);
    values.uint32 = io::ReadValue<std::uint32_t>(stream);
    values.int64 = io::ReadValue<std::int64_t>(stream);
    values.uint64 = io::ReadValue<std::uint64_t>(stream);
    values.wide_enum = io::ReadValue<wide_enum_t>(stream);
    values.narrow_enum = io::ReadValue<narrow_enum_t>(stream);
    values.yes = io::ReadValue<bool>(stream);
    values.no = io::ReadValue<bool>(stream);
    values.absent = io::ReadOptionalValue<std::uint64_t>(stream);
    values.present = io::ReadOptionalValue<std::uint64_t>(stream);
    values.string = io::ReadString(stream);
    values.empty_string = io::ReadString(stream);
    values.absent_string = io::ReadOptionalString(stream);
    values.empty_optional_string = io::ReadOptionalString(stream);
    values.optional_string = io::ReadOptionalString(stream);
    values.array = io::ReadArray<cnt::plain_array_t>(stream);
    values.empty_array = io::ReadArray<cnt::secure_array_t>(stream);
    values.sequence.clear();
    for (auto count = io::ReadValue<std::uint32_t>(stream); count != 0; --count)
        values.sequence.push_back(io::ReadValue<std::int32_t>(stream));
    return values;
}

std::string Encoded(const values_t& values)
{
    stub_dev_t device;
    Write(device, values);
    return device.written();
}

// What the device is asked for when stream_values.hex is read: a width, negative for the bytes of a string.
const std::vector<int> kPieces = {1,  1, 4, 4, 8, 8, 4, 4,  4, 4,  4, 4, 8, 4,
                                  -4, 4, 4, 4, 4, 4, 4, -2, 4, -3, 4, 4, 4, 4};

// How reading fails when the record ends after so many bytes.
std::string FailureAfter(std::size_t size)
{
    for (const int piece : kPieces)
    {
        const auto width = static_cast<std::size_t>(piece < 0 ? -piece : piece);
        if (size < width)
            return (piece < 0 ? ShortString : ShortRead)(std::to_string(size), std::to_string(width));
        size -= width;
    }
    return "none";
}

template <class Value>
class BinaryBytes : public ::testing::Test
{
};

template <class Array>
struct array_io_tt
{
    static std::string Read(io::io_dev_t& device) { return Text(io::ReadArray<Array>(device)); }
    static void Write(io::io_dev_t& device, const std::string& bytes)
    {
        io::WriteArray(device, Array(bytes.data(), bytes.size()));
    }
};

struct string_io_t
{
    static std::string Read(io::io_dev_t& device) { return io::ReadString(device); }
    static void Write(io::io_dev_t& device, const std::string& bytes) { io::WriteString(device, bytes); }
};

// All that is a length and so many bytes.
using byte_kinds_t =
    ::testing::Types<string_io_t, array_io_tt<cnt::plain_array_t>, array_io_tt<cnt::secure_array_t>>;
TYPED_TEST_SUITE(BinaryBytes, byte_kinds_t);

} // namespace

TEST(BinaryValue, RecordOfAllKindsHasItsGoldenBytes)
{
    EXPECT_EQ(Hex(Golden("stream_values")), Hex(Encoded({})));
}

TEST(BinaryValue, RecordOfAllKindsIsReadFromItsGoldenBytes)
{
    const values_t values = Read(Golden("stream_values"));
    EXPECT_EQ(Hex(Golden("stream_values")), Hex(Encoded(values)));
    EXPECT_EQ(-2, values.int8);
    EXPECT_EQ(-2, values.int32);
    EXPECT_EQ(-2, values.int64);
    EXPECT_EQ(kZeroInside, values.string);
    EXPECT_FALSE(values.absent_string.has_value());
    EXPECT_TRUE(values.empty_optional_string.has_value());
}

TEST(BinaryValue, EachPrefixOfARecordFailsWhereItEnds)
{
    for (const std::string& prefix : Prefixes(Golden("stream_values")))
        EXPECT_EQ(FailureAfter(prefix.size()), Failure([&] { Read(prefix); })) << prefix.size();
}

TEST(BinaryValue, EachTurnedBitGivesAnotherRecordOrAFailure)
{
    const std::vector<std::string> flips = BitFlips(Golden("stream_values"));
    for (std::size_t bit = 0; bit < flips.size(); ++bit)
    {
        if (std::count(kHighBytesOfLengths.begin(), kHighBytesOfLengths.end(), bit / 8) != 0)
            continue;
        try
        {
            const std::string encoded = Encoded(Read(flips[bit]));
            EXPECT_EQ(Hex(encoded), Hex(Encoded(Read(encoded)))) << Hex(flips[bit]);
        }
        catch (const exc::runtime_exc_t& e)
        {
            EXPECT_EQ(0u, std::string(e.what()).find("Failed to retrieve ")) << Hex(flips[bit]);
        }
    }
}

TEST(BinaryValue, NumbersAreLittleEndianInTheirOwnWidth)
{
    EXPECT_EQ("7f", WrittenValue(std::int8_t{127}));
    EXPECT_EQ("04 03 02 01", WrittenValue(kNumber));
    EXPECT_EQ("00 00 00 80", WrittenValue(std::numeric_limits<std::int32_t>::min()));
    EXPECT_EQ("08 07 06 05 04 03 02 01", WrittenValue(kLongNumber));
    EXPECT_EQ("ff ff ff ff ff ff ff 7f", WrittenValue(std::numeric_limits<std::int64_t>::max()));
}

TEST(BinaryValue, EachEnumerationTakesFourBytes)
{
    EXPECT_EQ("07 00 00 00", WrittenValue(narrow_enum_t{7}));
    EXPECT_EQ("04 03 02 01", WrittenValue(wide_enum_t{kNumber}));
    EXPECT_EQ(wide_enum_t{kNumber}, ReadValueFrom<wide_enum_t>("04 03 02 01"));
    EXPECT_EQ(narrow_enum_t{7}, ReadValueFrom<narrow_enum_t>("07 00 00 00"));
}

TEST(BinaryValue, OtherWidthsHaveNoForm)
{
    EXPECT_FALSE(io::kIsStreamValue<std::int16_t>);
    EXPECT_FALSE(io::kIsStreamValue<double>);
    EXPECT_FALSE(io::kIsStreamValue<huge_enum_t>);
    EXPECT_TRUE(io::kIsStreamValue<bool>);
}

TEST(BinaryValue, WideStringHasNoForm)
{
    EXPECT_TRUE((std::is_invocable_v<decltype(io::WriteString), io::io_dev_t&, std::string>));
    EXPECT_FALSE((std::is_invocable_v<decltype(io::WriteString), io::io_dev_t&, std::wstring>));
}

TEST(BinaryValue, BooleanTakesFourBytesAndIsZeroOrOne)
{
    EXPECT_EQ("01 00 00 00", WrittenValue(true));
    EXPECT_EQ("00 00 00 00", WrittenValue(false));
}

TEST(BinaryValue, BooleanThatIsReadAsAnythingButZeroIsTrueAndWrittenBackAsOne)
{
    for (const char* bytes : {"07 00 00 00", "00 01 00 00", "00 00 00 80"})
        EXPECT_EQ("01 00 00 00", WrittenValue(ReadValueFrom<bool>(bytes))) << bytes;
    EXPECT_FALSE(ReadValueFrom<bool>("00 00 00 00"));
}

TEST(BinaryValue, EachValueIsOneCallOfTheDevice)
{
    stub_dev_t device(Golden("stream_values"));
    io::WriteValue(device, std::uint8_t{1});
    io::WriteValue(device, true);
    io::WriteOptionalValue(device, std::optional<std::uint64_t>(1));
    io::WriteOptionalString(device, "abc");
    io::ReadValue<std::int8_t>(device);
    EXPECT_EQ(
        calls_t({"write 1", "write 4", "write 4", "write 8", "write 4", "write 4", "write 3", "read 1"}),
        device.calls());
}

TEST(BinaryValue, ShortWriteTellsBothCounts)
{
    stub_dev_t device;
    device.TakeOnly(3);
    EXPECT_EQ("Failed to write value to the binary stream: written less bytes (3) than expected (4).",
              Failure([&] { io::WriteValue(device, kNumber); }));
}

TEST(BinaryValue, ShortReadTellsBothCounts)
{
    stub_dev_t device("\1\2\3");
    EXPECT_EQ(ShortRead("3", "8"), Failure([&] { io::ReadValue<std::uint64_t>(device); }));
    EXPECT_EQ(ShortRead("0", "4"), Failure([&] { io::ReadValue<std::int32_t>(device); }));
    EXPECT_EQ(ShortRead("0", "1"), Failure([&] { io::ReadValue<std::int8_t>(device); }));
}

TEST(BinaryValue, CountsOfAValueAreUnsigned)
{
    stub_dev_t device;
    device.Answer(UINT64_MAX);
    device.Answer(UINT64_MAX, 1);
    EXPECT_EQ("Failed to write value to the binary stream: written less bytes (18446744073709551615) than "
              "expected (4).",
              Failure([&] { io::WriteValue(device, kNumber); }));
    EXPECT_EQ(ShortRead("18446744073709551615", "4"), Failure([&] { io::ReadValue<std::uint32_t>(device); }));
}

TEST(BinaryValue, MoreThanTheValueIsAFailureToo)
{
    stub_dev_t device;
    device.Answer(5);
    EXPECT_EQ(ShortRead("5", "4"), Failure([&] { io::ReadValue<std::uint32_t>(device); }));
}

TEST(BinaryValue, BytesThatTheDeviceOnlyClaimsAreZero)
{
    stub_dev_t device;
    device.Answer(8);
    EXPECT_EQ(0u, io::ReadValue<std::uint64_t>(device));
}

TEST(BinaryValue, ExceptionsOfTheDevicePass)
{
    stub_dev_t device(Unhex("01 00 00 00"));
    device.Fail("no disk");
    device.Fail("no line", 1);
    device.Fail("no end", 3);
    EXPECT_EQ("no disk", Thrown<std::runtime_error>([&] { io::WriteValue(device, kNumber); }));
    EXPECT_EQ("no line", Thrown<std::runtime_error>([&] { io::ReadValue<std::uint32_t>(device); }));
    EXPECT_EQ("no end", Thrown<std::runtime_error>([&] { io::ReadString(device); }));
}

TEST(BinaryValue, OptionalValueIsABooleanAndThenTheValue)
{
    const auto written = [](const std::optional<bool>& value)
    { return Written([&](io::io_dev_t& device) { io::WriteOptionalValue(device, value); }); };
    EXPECT_EQ("00 00 00 00", written({}));
    EXPECT_EQ("01 00 00 00 00 00 00 00", written(false));
}

TEST(BinaryValue, AbsentOptionalReadsNothingMore)
{
    stub_dev_t device(Unhex("00 00 00 00 05"));
    EXPECT_FALSE(io::ReadOptionalValue<std::int8_t>(device).has_value());
    EXPECT_EQ(calls_t({"read 4"}), device.calls());
}

TEST(BinaryValue, OptionalThatIsReadInPlaceStaysAfterAFailure)
{
    stub_dev_t device(Unhex("01 00 00 00 05  00 00 00 00  01 00 00 00"));
    std::optional<std::int8_t> value = 3;
    io::ReadOptionalValue(device, value);
    EXPECT_EQ(std::optional<std::int8_t>(5), value);
    io::ReadOptionalValue(device, value);
    EXPECT_EQ(std::nullopt, value);
    value = 3;
    EXPECT_EQ(ShortRead("0", "1"), Failure([&] { io::ReadOptionalValue(device, value); }));
    EXPECT_EQ(std::optional<std::int8_t>(3), value);
}

TEST(BinaryValue, OptionalIsPresentForAnyBooleanButZero)
{
    stub_dev_t device(Unhex("07 00 00 00 05  00 00 00 80 01 00 00 00 61"));
    EXPECT_EQ(std::optional<std::int8_t>(5), io::ReadOptionalValue<std::int8_t>(device));
    EXPECT_EQ(std::optional<std::string>("a"), io::ReadOptionalString(device));
}

TEST(BinaryValue, AbsentAndEmptyOptionalStringsAreToldApart)
{
    const auto written = [](const std::optional<std::string>& value)
    { return Written([&](io::io_dev_t& device) { io::WriteOptionalString(device, value); }); };
    EXPECT_EQ("00 00 00 00", written({}));
    EXPECT_EQ("01 00 00 00 00 00 00 00", written(""));

    stub_dev_t device(Unhex("00 00 00 00  01 00 00 00 00 00 00 00"));
    EXPECT_EQ(std::nullopt, io::ReadOptionalString(device));
    EXPECT_EQ(std::optional<std::string>(""), io::ReadOptionalString(device));
    EXPECT_EQ(calls_t({"read 4", "read 4", "read 4"}), device.calls());
}

TEST(BinaryValue, RawBytesHaveNoLengthAndNobodyLooksAtTheCount)
{
    stub_dev_t device("xy");
    device.TakeOnly(1);
    io::WriteRaw(device, "abc", 3);
    EXPECT_EQ("a", device.written());

    char buffer[] = "1234";
    io::ReadRaw(device, buffer, 4);
    EXPECT_EQ(std::string("xy\0\0", 4), std::string(buffer, 4));
    EXPECT_EQ(calls_t({"write 3", "read 4"}), device.calls());
}

TYPED_TEST(BinaryBytes, AreALengthAndTheBytes)
{
    stub_dev_t device;
    TypeParam::Write(device, kZeroInside);
    EXPECT_EQ("04 00 00 00 61 62 00 63", Hex(device.written()));
    EXPECT_EQ(calls_t({"write 4", "write 4"}), device.calls());
}

TYPED_TEST(BinaryBytes, EmptyOnesAreWrittenWithACountOfZero)
{
    stub_dev_t device;
    TypeParam::Write(device, "");
    EXPECT_EQ("00 00 00 00", Hex(device.written()));
    EXPECT_EQ(calls_t({"write 4", "write 0"}), device.calls());
}

TYPED_TEST(BinaryBytes, EmptyOnesReadTheLengthAlone)
{
    stub_dev_t device(Unhex("00 00 00 00 61"));
    EXPECT_EQ("", TypeParam::Read(device));
    EXPECT_EQ(calls_t({"read 4"}), device.calls());
}

TYPED_TEST(BinaryBytes, AreReadAsTheyWereWrittenInAnySize)
{
    for (const std::size_t size : {1u, 2u, 15u, 16u, 4095u, 4096u, 4097u, 70000u})
    {
        std::string bytes(size, 'x');
        bytes.front() = '\0';
        bytes.back() = 'y';
        stub_dev_t out;
        TypeParam::Write(out, bytes);
        stub_dev_t in(out.written() + "z");
        EXPECT_TRUE(bytes == TypeParam::Read(in)) << size;
        EXPECT_EQ(calls_t({"read 4", "read " + std::to_string(size)}), in.calls());
    }
}

TYPED_TEST(BinaryBytes, ShortWriteOfTheLengthIsAFailure)
{
    stub_dev_t device;
    device.TakeOnly(0);
    EXPECT_EQ("Failed to write value to the binary stream: written less bytes (0) than expected (4).",
              Failure([&] { TypeParam::Write(device, "ab"); }));
    EXPECT_EQ(calls_t({"write 4"}), device.calls());
}

TYPED_TEST(BinaryBytes, ShortLengthIsAShortValue)
{
    stub_dev_t device(Unhex("02 00 00"));
    EXPECT_EQ(ShortRead("3", "4"), Failure([&] { TypeParam::Read(device); }));
}

TYPED_TEST(BinaryBytes, ShortReadTellsBothCounts)
{
    stub_dev_t device(Unhex("05 00 00 00 61 62"));
    EXPECT_EQ(ShortString("2", "5"), Failure([&] { TypeParam::Read(device); }));
}

TYPED_TEST(BinaryBytes, CountThatWasReadIsSigned)
{
    const auto read = [](const std::string& length)
    {
        stub_dev_t device(Unhex(length));
        device.Answer(UINT64_MAX, 1);
        TypeParam::Read(device);
    };
    EXPECT_EQ(ShortString("-1", "5"), Failure([&] { read("05 00 00 00"); }));
    EXPECT_EQ(ShortString("-1", "8197"), Failure([&] { read("05 20 00 00"); }));
}

TYPED_TEST(BinaryBytes, MoreThanTheLengthIsAFailureToo)
{
    stub_dev_t device(Unhex("05 00 00 00"));
    device.Answer(6, 1);
    EXPECT_EQ(ShortString("6", "5"), Failure([&] { TypeParam::Read(device); }));
}

TYPED_TEST(BinaryBytes, ThoseThatTheDeviceOnlyClaimsAreZero)
{
    const auto read = [](const std::string& length, std::uint64_t claimed)
    {
        stub_dev_t device(Unhex(length));
        device.Answer(claimed, 1);
        return TypeParam::Read(device);
    };
    EXPECT_EQ(std::string(5, '\0'), read("05 00 00 00", 5));
    EXPECT_EQ(std::string(8197, '\0'), read("05 20 00 00", 8197));
}

TYPED_TEST(BinaryBytes, HostileLengthOnAShortStreamFailsByItsCount)
{
    const auto read = [](const std::string& length)
    {
        stub_dev_t device(Unhex(length) + "abcde");
        return TypeParam::Read(device);
    };
    EXPECT_EQ("", read("00 00 00 00"));
    EXPECT_EQ("a", read("01 00 00 00"));
    EXPECT_EQ(ShortString("5", "2147483647"), Failure([&] { read("ff ff ff 7f"); }));
    EXPECT_EQ(ShortString("5", "2147483648"), Failure([&] { read("00 00 00 80"); }));
    EXPECT_EQ(ShortString("5", "4294967295"), Failure([&] { read("ff ff ff ff"); }));
}

TYPED_TEST(BinaryBytes, DeviceIsAskedForAllOfAHostileLengthAtOnce)
{
    stub_dev_t device(Unhex("ff ff ff ff"));
    Failure([&] { TypeParam::Read(device); });
    EXPECT_EQ(calls_t({"read 4", "read 4294967295"}), device.calls());
}

TEST(BinaryValue, ShortWriteOfAStringsBytesIsNotNoticed)
{
    stub_dev_t device;
    device.TakeOnly(2, 1);
    device.Answer(UINT64_MAX, 3);
    io::WriteString(device, "abcd");
    io::WriteArray(device, cnt::plain_array_t(2));
    EXPECT_EQ("04 00 00 00 61 62 02 00 00 00", Hex(device.written()));
}

TEST(BinaryValue, StringBeyondThirtyTwoBitsIsRefusedBeforeTheFirstByte)
{
    stub_dev_t device;
    EXPECT_EQ("Unable to cast value from [m] to [j].",
              Failure([&] { io::WriteString(device, std::string_view("a", 4294967296)); }));
    EXPECT_EQ(calls_t(), device.calls());
}

TEST(BinaryValue, LongestStringIsWritten)
{
    stub_dev_t device;
    device.TakeOnly(0, 1);
    io::WriteString(device, std::string_view("a", 4294967295));
    EXPECT_EQ("ff ff ff ff", Hex(device.written()));
    EXPECT_EQ(calls_t({"write 4", "write 4294967295"}), device.calls());
}
