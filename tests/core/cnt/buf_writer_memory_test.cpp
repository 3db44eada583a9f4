#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "nelvo/core/cnt/buf_writer.h"
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
