#include <cstdint>
#include <limits>
#include <new>
#include <string_view>

#include <gtest/gtest.h>

#include "nelvo/core/cnt/buf_writer.h"
#include "tests/core/cnt/little_memory.h"
#include "tests/core/cnt/resident_pages.h"

TEST(BufWriterMemory, SmallMessageTouchesAPageOfItsMebibyte)
{
    cnt::CBufWriter writer;
    writer.WriteString("a small message");
    EXPECT_EQ(1048576u, writer.GetBuffer()->size());
    EXPECT_GE(2u, ResidentPages(*writer.GetBuffer()));
}

TEST(BufWriterMemory, GreatestLengthOfAllIsReservedInFullAndTouchesNothing)
{
    cnt::CBufWriter writer;
    writer.ReserveLength(std::numeric_limits<std::uint32_t>::max());
    EXPECT_EQ(std::size_t{4097} * 1048576, writer.GetBuffer()->size());
    EXPECT_GE(2u, ResidentPages(*writer.GetBuffer()));
}

TEST(BufWriterMemory, TextWithoutRoomForItLeavesNoLengthBehind)
{
    // Never looked at.
    const std::string_view text("", std::numeric_limits<std::uint32_t>::max());
    cnt::CBufWriter writer;
    writer.WriteBool(true);
    {
        const little_memory_t little_memory;
        EXPECT_THROW(writer.WriteString(text), std::bad_alloc);
        EXPECT_THROW(writer.WriteBlob(text.size(), text.data()), std::bad_alloc);
    }
    EXPECT_EQ(1u, writer.GetPosition());
    EXPECT_EQ(1048576u, writer.GetBuffer()->size());
}
