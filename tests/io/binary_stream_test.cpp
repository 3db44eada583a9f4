#include "nelvo/io/binary_stream.h"

#include <type_traits>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "tests/support/stub_dev.h"
#include "tests/support/vtable_slot.h"

TEST(BinaryStream, IsADeviceThatForwards)
{
    using basic_t = io::basic_binary_stream_tt<io::io_dev_redirector_t>;
    EXPECT_TRUE((std::is_base_of_v<io::io_dev_redirector_t, basic_t>));
    EXPECT_TRUE((std::is_base_of_v<basic_t, io::binary_stream_tt>));
    EXPECT_EQ(sizeof(io::io_dev_redirector_t), sizeof(basic_t));
}

TEST(BinaryStream, KeepsTheOrderOfTheDevicesOperations)
{
    EXPECT_EQ(2u, VtableSlot(&io::binary_stream_tt::write));
    EXPECT_EQ(3u, VtableSlot(&io::binary_stream_tt::read));
}

TEST(BinaryStream, HoldsItsDeviceTwice)
{
    EXPECT_EQ(sizeof(io::io_dev_redirector_t) + sizeof(boost::shared_ptr<io::io_dev_t>),
              sizeof(io::binary_stream_tt));

    const auto device = boost::make_shared<stub_dev_t>();
    {
        const io::binary_stream_tt stream(device);
        EXPECT_EQ(3, device.use_count());
    }
    EXPECT_EQ(1, device.use_count());
}

TEST(BinaryStream, IsNotCopied)
{
    EXPECT_FALSE(std::is_copy_constructible_v<io::binary_stream_tt>);
    EXPECT_FALSE(std::is_copy_assignable_v<io::binary_stream_tt>);
}

TEST(BinaryStream, StacksOnAnotherStream)
{
    const auto device = boost::make_shared<stub_dev_t>("xy");
    io::binary_stream_tt stream(boost::make_shared<io::binary_stream_tt>(device));
    char buffer[3] = {};
    EXPECT_EQ(2u, stream.write("ab", 2));
    EXPECT_EQ(2u, stream.read(buffer, 3));
    EXPECT_EQ("ab", device->written());
    EXPECT_STREQ("xy", buffer);
    EXPECT_EQ(std::vector<std::string>({"write 2", "read 3"}), device->calls());
}

TEST(BinaryStream, MayBeMadeWithoutADevice)
{
    EXPECT_NO_THROW(io::binary_stream_tt(boost::shared_ptr<io::io_dev_t>()));
}
