#include "nelvo/io/io_dev.h"

#include <type_traits>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "tests/support/stub_dev.h"
#include "tests/support/vtable_slot.h"

TEST(IoDev, IsAPureInterface)
{
    EXPECT_TRUE(std::is_abstract_v<io::io_dev_t>);
    EXPECT_EQ(sizeof(void*), sizeof(io::io_dev_t));
    EXPECT_TRUE(std::has_virtual_destructor_v<io::io_dev_t>);
}

TEST(IoDev, WriteAndReadStandInThisOrderBehindBothDestructors)
{
    EXPECT_EQ(2u, VtableSlot(&io::io_dev_t::write));
    EXPECT_EQ(3u, VtableSlot(&io::io_dev_t::read));
}

TEST(IoDevRedirector, HoldsTheTargetAndNothingElse)
{
    EXPECT_EQ(sizeof(void*) + sizeof(boost::shared_ptr<io::io_dev_t>), sizeof(io::io_dev_redirector_t));

    const auto target = boost::make_shared<stub_dev_t>();
    const io::io_dev_redirector_t redirector(target);
    EXPECT_EQ(2, target.use_count());
}

TEST(IoDevRedirector, ForwardsAWriteAndItsResult)
{
    const auto target = boost::make_shared<stub_dev_t>();
    io::io_dev_redirector_t redirector(target);
    target->TakeOnly(3);
    EXPECT_EQ(3u, redirector.write("abcd", 4));
    EXPECT_EQ("abc", target->written());
    EXPECT_EQ(std::vector<std::string>({"write 4"}), target->calls());
}

TEST(IoDevRedirector, ForwardsAReadAndItsResult)
{
    const auto target = boost::make_shared<stub_dev_t>("ab");
    io::io_dev_redirector_t redirector(target);
    char buffer[4] = {};
    EXPECT_EQ(2u, redirector.read(buffer, 4));
    EXPECT_STREQ("ab", buffer);
    EXPECT_EQ(std::vector<std::string>({"read 4"}), target->calls());
}

TEST(IoDevRedirector, ForwardsCountsOfNothingToo)
{
    const auto target = boost::make_shared<stub_dev_t>("ab");
    io::io_dev_redirector_t redirector(target);
    EXPECT_EQ(0u, redirector.write(nullptr, 0));
    EXPECT_EQ(0u, redirector.read(nullptr, 0));
    EXPECT_EQ(std::vector<std::string>({"write 0", "read 0"}), target->calls());
}

TEST(IoDevRedirector, LetsExceptionsOfTheTargetPass)
{
    const auto target = boost::make_shared<stub_dev_t>();
    io::io_dev_redirector_t redirector(target);
    target->Fail("no disk");
    target->Fail("no line", 1);
    char buffer = 0;
    EXPECT_THROW(redirector.write("a", 1), std::runtime_error);
    EXPECT_THROW(redirector.read(&buffer, 1), std::runtime_error);
}
