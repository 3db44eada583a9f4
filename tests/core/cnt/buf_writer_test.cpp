#include "nelvo/core/cnt/buf_writer.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "tests/support/failure_text.h"
#include "tests/support/flat_buffer.h"
#include "tests/support/golden.h"

using namespace std::string_literals;
using cnt::CBufWriter;

namespace
{

constexpr std::size_t kMiB = 1048576;

std::string Written(void (*write)(CBufWriter&))
{
    CBufWriter writer;
    write(writer);
    return Hex(WrittenBy(writer));
}

// The array's size after so many bytes at a position.
std::size_t SizeAfter(std::size_t position, std::size_t size)
{
    const std::string bytes(position + size, 'x');
    CBufWriter writer;
    writer.WriteRaw(position, bytes.data());
    writer.WriteRaw(size, bytes.data());
    return writer.GetBuffer()->size();
}

} // namespace

TEST(BufWriter, WritesEachKindOfValue)
{
    const auto fields = GoldenFields("flat_values");
    const auto golden = [&fields](std::size_t index) { return Hex(fields.at(index)); };
    EXPECT_EQ(golden(0), Written([](CBufWriter& writer) { writer.WriteBool(false); }));
    EXPECT_EQ(golden(1), Written([](CBufWriter& writer) { writer.WriteBool(true); }));
    EXPECT_EQ(golden(2), Written([](CBufWriter& writer) { writer.WriteInt32(std::uint32_t{0x01020304}); }));
    EXPECT_EQ(golden(3), Written([](CBufWriter& writer) { writer.WriteInt32(-2); }));
    EXPECT_EQ(golden(4),
              Written([](CBufWriter& writer) { writer.WriteInt64(std::uint64_t{0x0102030405060708}); }));
    EXPECT_EQ(golden(5), Written([](CBufWriter& writer) { writer.WriteInt64(std::int64_t{-2}); }));
    EXPECT_EQ(golden(6), Written([](CBufWriter& writer) { writer.WriteString("a\0b"s); }));
    EXPECT_EQ(golden(7), Written([](CBufWriter& writer) { writer.WriteString({}); }));
    EXPECT_EQ(golden(8), Written([](CBufWriter& writer) { writer.WriteBlob(2, "\xff\0"); }));
    EXPECT_EQ(golden(9), Written([](CBufWriter& writer) { writer.WriteBlob(0, nullptr); }));
    EXPECT_EQ(golden(10), Written([](CBufWriter& writer) { writer.WriteRaw(3, "raw"); }));
    EXPECT_EQ(11u, fields.size());
}

TEST(BufWriter, ValuesFollowEachOtherWithoutAGap)
{
    CBufWriter writer;
    writer.WriteBool(true);
    writer.WriteInt64(std::uint64_t{1});
    writer.WriteRaw(0, nullptr);
    writer.WriteString("a");
    writer.WriteInt32(7);
    EXPECT_EQ("01 01 00 00 00 00 00 00 00 01 00 00 00 61 07 00 00 00", Hex(WrittenBy(writer)));
    EXPECT_EQ(18u, writer.GetPosition());
}

TEST(BufWriter, StartsAtZeroWithAnEmptyArray)
{
    const CBufWriter writer;
    EXPECT_EQ(0u, writer.GetPosition());
    EXPECT_EQ(0u, writer.GetBuffer()->size());
}

TEST(BufWriter, SizeRunsAheadOfThePosition)
{
    CBufWriter writer;
    writer.WriteRaw(5, "12345");
    EXPECT_EQ(5u, writer.GetPosition());
    EXPECT_EQ(1048576u, writer.GetBuffer()->size());
    EXPECT_EQ("12345" + std::string(kMiB - 5, '\0'), BytesOf(*writer.GetBuffer()));
}

TEST(BufWriter, GrowsToWholeMebibytesOfWhatIsNeeded)
{
    EXPECT_EQ(kMiB, SizeAfter(0, kMiB));
    EXPECT_EQ(kMiB, SizeAfter(kMiB - 4, 4));
    EXPECT_EQ(2 * kMiB, SizeAfter(0, kMiB + 1));
    EXPECT_EQ(2 * kMiB, SizeAfter(kMiB, 1));
    EXPECT_EQ(4 * kMiB, SizeAfter(3 * kMiB, 1)) << "and does not double";
    EXPECT_EQ(3 * kMiB, SizeAfter(5, 3 * kMiB - 5));
}

TEST(BufWriter, NothingWrittenGrowsNothing)
{
    EXPECT_EQ(0u, SizeAfter(0, 0));
    EXPECT_EQ(kMiB, SizeAfter(kMiB, 0));
}

TEST(BufWriter, SharedArrayIsWrittenFromItsStartAndKeepsItsSize)
{
    const auto array = ArrayOf("abcdefgh");
    CBufWriter writer(array);
    EXPECT_EQ(array, writer.GetBuffer());
    EXPECT_EQ(0u, writer.GetPosition());
    writer.WriteInt32(0x34333231);
    EXPECT_EQ("1234efgh", BytesOf(*array));
    writer.WriteInt32(0x38373635);
    EXPECT_EQ("12345678", BytesOf(*array)) << "what fits grows nothing";
    writer.WriteBool(true);
    EXPECT_EQ("12345678\1" + std::string(kMiB - 9, '\0'), BytesOf(*array));
}

TEST(BufWriter, InitialSizeIsKeptUntilMoreIsNeeded)
{
    CBufWriter writer(6);
    EXPECT_EQ("\0\0\0\0\0\0"s, BytesOf(*writer.GetBuffer()));
    EXPECT_EQ(0u, writer.GetPosition());
    writer.WriteString("ab");
    EXPECT_EQ(6u, writer.GetBuffer()->size());
    writer.WriteBool(false);
    EXPECT_EQ(kMiB, writer.GetBuffer()->size());
}

TEST(BufWriter, CopyHasTheBytesAndThePositionAndGoesItsOwnWay)
{
    CBufWriter writer;
    writer.WriteRaw(3, "abc");
    CBufWriter copy(writer);
    EXPECT_NE(writer.GetBuffer(), copy.GetBuffer());
    EXPECT_EQ(kMiB, copy.GetBuffer()->size());
    copy.WriteRaw(1, "x");
    writer.WriteRaw(1, "y");
    EXPECT_EQ("abcx", WrittenBy(copy));
    EXPECT_EQ("abcy", WrittenBy(writer));
}

TEST(BufWriter, CopyKeepsWhatStandsBehindThePosition)
{
    CBufWriter writer;
    writer.WriteRaw(3, "abc");
    writer.Rewind();
    CBufWriter copy(writer);
    copy.WriteRaw(1, "x");
    EXPECT_EQ("xbc", BytesOf(*copy.GetBuffer()).substr(0, 3));
    EXPECT_EQ(1u, copy.GetPosition());
}

TEST(BufWriter, RewindWritesOverTheStartAndKeepsTheArray)
{
    CBufWriter writer;
    writer.WriteRaw(3, "abc");
    writer.Rewind();
    EXPECT_EQ(0u, writer.GetPosition());
    EXPECT_EQ(kMiB, writer.GetBuffer()->size());
    writer.WriteRaw(1, "x");
    EXPECT_EQ("xbc", BytesOf(*writer.GetBuffer()).substr(0, 3));
}

TEST(BufWriter, ResetLeavesAnEmptyArray)
{
    CBufWriter writer;
    const auto array = writer.GetBuffer();
    writer.WriteRaw(3, "abc");
    writer.Reset();
    EXPECT_EQ(0u, writer.GetPosition());
    EXPECT_EQ(array, writer.GetBuffer());
    EXPECT_EQ(0u, array->size());
    writer.WriteRaw(1, "x");
    EXPECT_EQ("x" + std::string(kMiB - 1, '\0'), BytesOf(*array));
}

TEST(BufWriter, TextBeyondALengthIsRefusedAndNothingWritten)
{
    // Never looked at.
    const std::string_view text("", std::size_t{1} << 32U);
    CBufWriter writer;
    EXPECT_EQ("Unable to cast value from [m] to [j].", FailureText([&] { writer.WriteString(text); }));
    EXPECT_EQ("Unable to cast value from [m] to [j].",
              FailureText([&] { writer.WriteBlob(text.size(), text.data()); }));
    EXPECT_EQ(0u, writer.GetPosition());
    EXPECT_EQ(0u, writer.GetBuffer()->size());
}

TEST(BufWriter, MoreThanThereIsMemoryForIsABadAllocAndNothingWritten)
{
    CBufWriter writer;
    writer.WriteRaw(3, "abc");
    const std::size_t most = std::numeric_limits<std::ptrdiff_t>::max();
    for (const std::size_t size :
         {most - 3, most - 2, most, most + 1, std::numeric_limits<std::size_t>::max() - 2,
          std::numeric_limits<std::size_t>::max()})
        EXPECT_THROW(writer.WriteRaw(size, ""), std::bad_alloc) << size;
    EXPECT_EQ("abc", WrittenBy(writer));
    EXPECT_EQ(kMiB, writer.GetBuffer()->size());
}

TEST(BufWriterSlot, LengthAndDataStandBehindThePositionOnceItIsFilled)
{
    CBufWriter writer;
    writer.WriteBool(true);
    std::memcpy(writer.ReserveLength(), "data", 4);
    EXPECT_EQ(1u, writer.GetPosition());
    writer.FillLength(4);
    EXPECT_EQ(9u, writer.GetPosition());
    writer.WriteBool(false);
    EXPECT_EQ("01 04 00 00 00 64 61 74 61 00", Hex(WrittenBy(writer)));
}

TEST(BufWriterSlot, NoDataIsALengthOfZero)
{
    CBufWriter writer;
    writer.ReserveLength(0);
    writer.FillLength(0);
    EXPECT_EQ("00 00 00 00", Hex(WrittenBy(writer)));
}

TEST(BufWriterSlot, ArrayHasRoomForTheGreatestLength)
{
    CBufWriter writer;
    writer.ReserveLength(kMiB - 4);
    EXPECT_EQ(kMiB, writer.GetBuffer()->size());
    writer.ReserveLength();
    EXPECT_EQ(2 * kMiB, writer.GetBuffer()->size()) << "1 MiB unless told otherwise";
    writer.WriteRaw(kMiB, std::string(kMiB, 'x').data());
    writer.ReserveLength(2 * kMiB);
    EXPECT_EQ(4 * kMiB, writer.GetBuffer()->size());
}

TEST(BufWriterSlot, AllOfTheReservedRoomCanBeFilled)
{
    CBufWriter writer;
    std::memset(writer.ReserveLength(kMiB), 'x', kMiB);
    writer.FillLength(kMiB);
    EXPECT_EQ("\0\0\x10\0"s + std::string(kMiB, 'x'), WrittenBy(writer));
}

TEST(BufWriterSlot, MoreThanWasReservedIsRefused)
{
    CBufWriter writer;
    std::memcpy(writer.ReserveLength(4), "data", 4);
    EXPECT_EQ("Out of the array bound. Index of the requested array element: [4]. Array size: [4].",
              FailureText([&] { writer.FillLength(5); }));
    EXPECT_EQ("Out of the array bound. Index of the requested array element: [4294967294]. Array size: [4].",
              FailureText([&] { writer.FillLength(4294967295U); }));
    EXPECT_EQ(0u, writer.GetPosition());
    writer.FillLength(4);
    EXPECT_EQ("04 00 00 00 64 61 74 61", Hex(WrittenBy(writer)));
}

TEST(BufWriterSlot, FillingTwiceOrWithoutAReservationIsRefused)
{
    const std::string failure = "No length slot is reserved.";
    CBufWriter writer;
    EXPECT_EQ(failure, FailureText([&] { writer.FillLength(0); }));
    writer.ReserveLength(4);
    writer.FillLength(1);
    EXPECT_EQ(failure, FailureText([&] { writer.FillLength(1); }));
    EXPECT_EQ(5u, writer.GetPosition());
}

TEST(BufWriterSlot, RewindAndResetGiveItUp)
{
    CBufWriter writer;
    writer.ReserveLength(4);
    writer.Rewind();
    EXPECT_EQ("No length slot is reserved.", FailureText([&] { writer.FillLength(1); }));
    writer.ReserveLength(4);
    writer.Reset();
    EXPECT_EQ("No length slot is reserved.", FailureText([&] { writer.FillLength(1); }));
}

TEST(BufWriterSlot, LengthGoesToItsPlaceAlsoWhenTheArrayHasMoved)
{
    CBufWriter writer;
    writer.WriteBool(true);
    std::memcpy(writer.ReserveLength(4), "data", 4);
    const auto array = writer.GetBuffer();
    const cnt::plain_array_t keeps_the_old_place(std::move(*array));
    *array = keeps_the_old_place;
    writer.FillLength(4);
    EXPECT_EQ("01 04 00 00 00 64 61 74 61", Hex(WrittenBy(writer)));
}

TEST(BufWriterSlot, WriteInBetweenIsGoneOverByTheLengthAndMovesThePositionAsWell)
{
    CBufWriter writer;
    writer.WriteBool(true);
    std::memcpy(writer.ReserveLength(8), "data", 4);
    writer.WriteInt64(std::int64_t{-1});
    writer.FillLength(4);
    EXPECT_EQ(17u, writer.GetPosition());
    EXPECT_EQ("01 04 00 00 00 ff ff ff ff 00 00 00 00 00 00 00 00", Hex(WrittenBy(writer)));
}

TEST(BufWriterSlot, FillingBehindAWriteInBetweenGrowsTheArrayToThePosition)
{
    CBufWriter writer;
    writer.ReserveLength(kMiB - 4);
    writer.WriteRaw(kMiB, std::string(kMiB, 'x').data());
    EXPECT_EQ(kMiB, writer.GetBuffer()->size());
    writer.FillLength(4);
    EXPECT_EQ(kMiB + 8, writer.GetPosition());
    EXPECT_EQ(2 * kMiB, writer.GetBuffer()->size());
    EXPECT_EQ("\4\0\0\0"s + std::string(kMiB - 4, 'x') + std::string(8, '\0'), WrittenBy(writer));
}

TEST(BufWriterSlot, AnotherReservationTakesThePlaceOfTheFirst)
{
    CBufWriter writer;
    writer.ReserveLength(8);
    writer.WriteBool(true);
    std::memcpy(writer.ReserveLength(4), "data", 4);
    EXPECT_EQ("Out of the array bound. Index of the requested array element: [4]. Array size: [4].",
              FailureText([&] { writer.FillLength(5); }));
    writer.FillLength(4);
    EXPECT_EQ("01 04 00 00 00 64 61 74 61", Hex(WrittenBy(writer)));
}

TEST(BufWriterSlot, ArrayThatWasCutMeanwhileGrowsToThePosition)
{
    CBufWriter writer;
    writer.ReserveLength(kMiB);
    writer.GetBuffer()->resize(0);
    writer.FillLength(kMiB);
    EXPECT_EQ(2 * kMiB, writer.GetBuffer()->size());
    EXPECT_EQ("\0\0\x10\0"s + std::string(kMiB, '\0'), WrittenBy(writer));
}

TEST(BufWriterSlot, CopyFillsItsOwn)
{
    CBufWriter writer;
    std::memcpy(writer.ReserveLength(4), "data", 4);
    CBufWriter copy(writer);
    copy.FillLength(4);
    EXPECT_EQ("04 00 00 00 64 61 74 61", Hex(WrittenBy(copy)));
    EXPECT_EQ("\0\0\0\0data"s, BytesOf(*writer.GetBuffer()).substr(0, 8));
}
