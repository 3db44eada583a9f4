#include "nelvo/core/cnt/buf_reader.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/failing_memory.h"
#include "tests/support/failure_text.h"
#include "tests/support/flat_buffer.h"
#include "tests/support/golden.h"

using namespace std::string_literals;

namespace
{

constexpr const char* kBoolean = "Failed to extract boolean value from buffer.";
constexpr const char* kInteger = "Failed to extract integer value from buffer.";
constexpr const char* kBlob = "Failed to extract binary content from buffer.";
constexpr const char* kString = "Failed to extract multi-byte string from buffer .";

using read_t = std::function<void(CBufReader&)>;

struct kind_t
{
    read_t read;
    std::string context;
    std::string bad_length; // the name of what has a length
};

void ReadPlain(CBufReader& reader)
{
    cnt::plain_array_t blob;
    reader.ReadBlob(blob);
}

void ReadSecure(CBufReader& reader)
{
    cnt::secure_array_t blob;
    reader.ReadBlob(blob);
}

void ReadIntoMemory(CBufReader& reader)
{
    char memory[16];
    reader.ReadBlob(memory, sizeof(memory));
}

const std::vector<kind_t>& Integers()
{
    static const std::vector<kind_t> kinds = {
        {[](CBufReader& reader) { reader.ReadUint32(); }, kInteger, ""},
        {[](CBufReader& reader) { reader.ReadInt32(); }, kInteger, ""},
        {[](CBufReader& reader) { reader.ReadUint64(); }, kInteger, ""},
        {[](CBufReader& reader) { reader.ReadInt64(); }, kInteger, ""},
    };
    return kinds;
}

const std::vector<kind_t>& KindsWithLength()
{
    static const std::vector<kind_t> kinds = {
        {[](CBufReader& reader) { reader.ReadString(); }, kString, "string"},
        {ReadPlain, kBlob, "binary data"},
        {ReadSecure, kBlob, "binary data"},
        {ReadIntoMemory, kBlob, "binary data"},
    };
    return kinds;
}

std::string FailureOf(const std::string& bytes, const read_t& read)
{
    CBufReader reader(ArrayOf(bytes));
    return FailureText([&] { read(reader); });
}

template <class Value>
Value ReadAs(const std::string& bytes, Value (CBufReader::*read)())
{
    CBufReader reader(ArrayOf(bytes));
    const Value value = (reader.*read)();
    EXPECT_EQ(bytes.size(), reader.GetPosition());
    return value;
}

template <class Array>
std::string BlobAs(const std::string& bytes)
{
    CBufReader reader(ArrayOf(bytes));
    Array blob("what was there before", 21);
    reader.ReadBlob(blob);
    EXPECT_EQ(bytes.size(), reader.GetPosition());
    return BytesOf(blob);
}

} // namespace

TEST(BufReader, ReadsEachKindOfValue)
{
    const auto fields = GoldenFields("flat_values");
    ASSERT_EQ(11u, fields.size());
    EXPECT_FALSE(ReadAs(fields[0], &CBufReader::ReadBool));
    EXPECT_TRUE(ReadAs(fields[1], &CBufReader::ReadBool));
    EXPECT_EQ(0x01020304u, ReadAs(fields[2], &CBufReader::ReadUint32));
    EXPECT_EQ(-2, ReadAs(fields[3], &CBufReader::ReadInt32));
    EXPECT_EQ(0x0102030405060708u, ReadAs(fields[4], &CBufReader::ReadUint64));
    EXPECT_EQ(-2, ReadAs(fields[5], &CBufReader::ReadInt64));
    EXPECT_EQ("a\0b"s, ReadAs(fields[6], &CBufReader::ReadString));
    EXPECT_EQ("", ReadAs(fields[7], &CBufReader::ReadString));
    EXPECT_EQ("\xff\0"s, BlobAs<cnt::plain_array_t>(fields[8]));
    EXPECT_EQ("\xff\0"s, BlobAs<cnt::secure_array_t>(fields[8]));
    EXPECT_EQ("", BlobAs<cnt::plain_array_t>(fields[9]));
    EXPECT_EQ("", BlobAs<cnt::secure_array_t>(fields[9]));
}

TEST(BufReader, ValuesFollowEachOther)
{
    CBufReader reader(ArrayOf(Golden("flat_values")));
    EXPECT_FALSE(reader.ReadBool());
    EXPECT_TRUE(reader.ReadBool());
    EXPECT_EQ(0x01020304u, reader.ReadUint32());
    EXPECT_EQ(0xfffffffeu, reader.ReadUint32());
    EXPECT_EQ(0x0102030405060708, reader.ReadInt64());
    EXPECT_EQ(0xfffffffffffffffeu, reader.ReadUint64());
    EXPECT_EQ("a\0b"s, reader.ReadString());
    EXPECT_EQ("", reader.ReadString());
    char memory[3] = {'x', 'x', 'x'};
    EXPECT_EQ(2u, reader.ReadBlob(memory, 3));
    EXPECT_EQ("\xff\0x"s, std::string(memory, 3));
    EXPECT_EQ(0u, reader.ReadBlob(nullptr, 0));
    EXPECT_EQ("raw", std::string(reader.Take(3), 3));
    EXPECT_EQ(50u, reader.GetPosition());
}

TEST(BufReader, AnyByteButZeroIsTrue)
{
    for (const char byte : {'\x02', '\x80', '\xff'})
        EXPECT_TRUE(ReadAs({byte}, &CBufReader::ReadBool));
}

TEST(BufReader, WithoutAnArrayAnyReadFails)
{
    const std::string failure = "CBufReader buffer not initialized.";
    CBufReader reader;
    CBufReader null_reader{CBufReader::buffer_ptr_t()};
    EXPECT_EQ(failure, FailureText([&] { reader.Take(0); }));
    EXPECT_EQ(failure, FailureText([&] { null_reader.Take(1); }));
    EXPECT_EQ(failure + "\n" + kBoolean, FailureText([&] { reader.ReadBool(); }));
    for (const kind_t& kind : Integers())
        EXPECT_EQ(failure + "\n" + kind.context, FailureText([&] { kind.read(reader); }));
    for (const kind_t& kind : KindsWithLength())
        EXPECT_EQ(failure + "\n" + kind.context, FailureText([&] { kind.read(reader); }));
}

TEST(BufReader, ReadBeyondTheEndNamesSizesAndPosition)
{
    EXPECT_EQ("Out of the buffer, buffer size '3', struct size '4', buffer pointer '0'.\n"
              "Failed to extract integer value from buffer.",
              FailureOf("abc", [](CBufReader& reader) { reader.ReadUint32(); }));
    EXPECT_EQ("Out of the buffer, buffer size '7', struct size '8', buffer pointer '0'.\n"
              "Failed to extract integer value from buffer.",
              FailureOf("1234567", [](CBufReader& reader) { reader.ReadInt64(); }));
    EXPECT_EQ("Out of the buffer, buffer size '0', struct size '1', buffer pointer '0'.\n"
              "Failed to extract boolean value from buffer.",
              FailureOf("", [](CBufReader& reader) { reader.ReadBool(); }));
}

TEST(BufReader, ContextOfAStringHasABlankBeforeItsPoint)
{
    EXPECT_EQ("Out of the buffer, buffer size '0', struct size '4', buffer pointer '0'.\n"
              "Failed to extract multi-byte string from buffer .",
              FailureOf("", [](CBufReader& reader) { reader.ReadString(); }));
}

TEST(BufReader, TakesNothingAlsoAtTheEnd)
{
    CBufReader reader(ArrayOf("ab"));
    const char* const start = reader.Take(2);
    EXPECT_EQ(start + 2, reader.Take(0));
    EXPECT_EQ(2u, reader.GetPosition());
    CBufReader empty(ArrayOf(""));
    empty.Take(0);
    EXPECT_EQ(0u, empty.GetPosition());
}

TEST(BufReader, FailedTakeLeavesThePosition)
{
    CBufReader reader(ArrayOf("abcd"));
    reader.Take(1);
    for (const std::uint64_t size :
         {std::uint64_t{4}, std::uint64_t{1} << 32U, std::numeric_limits<std::uint64_t>::max() - 1,
          std::numeric_limits<std::uint64_t>::max()})
        EXPECT_EQ(OutOfBuffer(4, size, 1), FailureText([&] { reader.Take(size); }));
    EXPECT_EQ(1u, reader.GetPosition());
    EXPECT_EQ("bcd", std::string(reader.Take(3), 3));
}

TEST(BufReader, NewArrayIsReadFromItsStart)
{
    CBufReader reader(ArrayOf("abcd"));
    reader.Take(3);
    reader.SetBuffer(ArrayOf("xyz"));
    EXPECT_EQ(0u, reader.GetPosition());
    EXPECT_EQ("xyz", std::string(reader.Take(3), 3));
    reader.SetBuffer(nullptr);
    EXPECT_EQ("CBufReader buffer not initialized.", FailureText([&] { reader.Take(0); }));
}

TEST(BufReader, ReadersOfOneArrayHavePositionsOfTheirOwn)
{
    const auto array = ArrayOf("abcd");
    CBufReader first(array);
    CBufReader second(array);
    EXPECT_EQ(first.Take(1), second.Take(1));
    EXPECT_EQ(first.Take(2), second.Take(2));
}

TEST(BufReader, ArrayThatWasCutBelowThePositionHasNothingMore)
{
    const auto array = ArrayOf("abcd");
    CBufReader reader(array);
    reader.Take(3);
    array->resize(2);
    EXPECT_EQ(OutOfBuffer(2, 0, 3), FailureText([&] { reader.Take(0); }));
    EXPECT_EQ(OutOfBuffer(2, 1, 3), FailureText([&] { reader.Take(1); }));
}

TEST(BufReader, EveryCutThroughAValueIsToldAsSuch)
{
    for (const kind_t& kind : KindsWithLength())
    {
        const std::string record = Unhex("03 00 00 00 61 62 63");
        for (const std::string& bytes : Prefixes(record))
        {
            const std::string cause =
                bytes.size() < 4 ? OutOfBuffer(bytes.size(), 4, 0) : OutOfBuffer(bytes.size(), 3, 4);
            EXPECT_EQ(cause + "\n" + kind.context, FailureOf(bytes, kind.read));
        }
    }
    for (const kind_t& kind : Integers())
        for (const std::string& bytes : Prefixes("1234"))
            EXPECT_EQ(0u, FailureOf(bytes, kind.read)
                              .find("Out of the buffer, buffer size '" + std::to_string(bytes.size()) +
                                    "', struct size '"));
}

TEST(BufReader, LengthAboveTheLimitIsRefusedBeforeTheBytesAreLookedFor)
{
    struct
    {
        const char* bytes;
        const char* length;
    } const lengths[] = {
        {"01 00 40 1f", "524288001"},  {"ff ff ff 7f", "2147483647"}, {"00 00 00 80", "2147483648"},
        {"fb ff ff ff", "4294967291"}, {"ff ff ff ff", "4294967295"},
    };
    for (const auto& [bytes, length] : lengths)
        for (const kind_t& kind : KindsWithLength())
            EXPECT_EQ("Invalid length of the " + kind.bad_length + " '" + length + "'.\n" + kind.context,
                      FailureOf(Unhex(bytes) + "abc", kind.read));
}

TEST(BufReader, LengthWithinTheLimitIsHeldAgainstTheBuffer)
{
    for (const kind_t& kind : KindsWithLength())
    {
        EXPECT_EQ("no failure", FailureOf(Unhex("00 00 00 00") + "abc", kind.read));
        EXPECT_EQ("no failure", FailureOf(Unhex("01 00 00 00") + "abc", kind.read));
        EXPECT_EQ("no failure", FailureOf(Unhex("03 00 00 00") + "abc", kind.read));
        EXPECT_EQ(OutOfBuffer(7, 4, 4) + "\n" + kind.context,
                  FailureOf(Unhex("04 00 00 00") + "abc", kind.read));
    }
    EXPECT_EQ(OutOfBuffer(7, 524288000, 4) + "\n" + kString,
              FailureOf(Unhex("00 00 40 1f") + "abc", [](CBufReader& reader) { reader.ReadString(); }));
    EXPECT_EQ(OutOfBuffer(7, 524288000, 4) + "\n" + kBlob,
              FailureOf(Unhex("00 00 40 1f") + "abc", ReadPlain));
    EXPECT_EQ(OutOfBuffer(7, 524288000, 4) + "\n" + kBlob,
              FailureOf(Unhex("00 00 40 1f") + "abc", ReadSecure));
}

TEST(BufReader, RefusedLengthLeavesThePositionBehindTheLengthField)
{
    for (const kind_t& kind : KindsWithLength())
    {
        CBufReader reader(ArrayOf(Unhex("ff ff ff ff 01")));
        EXPECT_NE("no failure", FailureText([&] { kind.read(reader); }));
        EXPECT_EQ(4u, reader.GetPosition());
    }
}

TEST(BufReader, LengthBeyondTheBufferLeavesThePositionBehindTheLengthField)
{
    for (const kind_t& kind : KindsWithLength())
    {
        CBufReader reader(ArrayOf(Unhex("02 00 00 00 01")));
        EXPECT_NE("no failure", FailureText([&] { kind.read(reader); }));
        EXPECT_EQ(4u, reader.GetPosition());
    }
}

TEST(BufReader, BlobThatDoesNotFitIntoTheCallersMemoryIsRefused)
{
    char memory[3] = {'x', 'x', 'x'};
    CBufReader reader(ArrayOf(Unhex("03 00 00 00 61 62 63")));
    EXPECT_EQ("Invalid length of the binary data '3'.\nFailed to extract binary content from buffer.",
              FailureText([&] { reader.ReadBlob(memory, 2); }));
    EXPECT_EQ("xxx", std::string(memory, 3));
    EXPECT_EQ(4u, reader.GetPosition());
    reader.SetBuffer(ArrayOf(Unhex("03 00 00 00 61 62 63")));
    EXPECT_EQ(3u, reader.ReadBlob(memory, 3));
    EXPECT_EQ("abc", std::string(memory, 3));
}

TEST(BufReader, FailedReadLeavesTheTargetOfABlob)
{
    cnt::plain_array_t plain("old", 3);
    cnt::secure_array_t secure("old", 3);
    CBufReader reader(ArrayOf(Unhex("10 00 00 00 61")));
    EXPECT_NE("no failure", FailureText([&] { reader.ReadBlob(plain); }));
    reader.SetBuffer(ArrayOf(Unhex("10 00 00 00 61")));
    EXPECT_NE("no failure", FailureText([&] { reader.ReadBlob(secure); }));
    EXPECT_EQ("old", BytesOf(plain));
    EXPECT_EQ("old", BytesOf(secure));
    EXPECT_EQ(3u, plain.capacity()) << "no memory was asked for";
}

TEST(BufReader, LackOfMemoryIsToldWithItsContext)
{
    CBufReader reader(ArrayOf(Unhex("14 00 00 00") + "a text of 20 letters"));
    EXPECT_EQ("std::bad_alloc\nFailed to extract multi-byte string from buffer .",
              FailureText(
                  [&]
                  {
                      FailNextAllocation();
                      reader.ReadString();
                  }));
}

TEST(BufReader, EachFlippedBitIsReadOrTold)
{
    const std::string bytes = Unhex("03 00 00 00 61 62 63");
    for (const std::string& flipped : BitFlips(bytes))
        for (const kind_t& kind : KindsWithLength())
        {
            const std::string failure = FailureOf(flipped, kind.read);
            EXPECT_TRUE(failure == "no failure" || failure.find("\n" + kind.context) != std::string::npos)
                << failure;
        }
}
