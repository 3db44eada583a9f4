#include "nelvo/logging/channels.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/logging/log.h"
#include "tests/support/failing_memory.h"
#include "tests/support/lines_receiver.h"

namespace
{

namespace channels = logging::channels;

class Channels : public ::testing::Test
{
protected:
    void SetUp() override { logging::GetProcessLog()->set_receiver(m_receiver); }
    void TearDown() override { logging::GetProcessLog()->set_receiver({}); }

    std::string Written() const { return WithoutHeads(m_receiver->text()); }

    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
};

} // namespace

TEST_F(Channels, EachButDbgWritesItsTagToTheProcessLog)
{
    const logging::log_channel_t* const all[] = {
        &channels::default_log, &channels::dmn,        &channels::cli, &channels::srv, &channels::prt,
        &channels::vcb,         &channels::vcb_second, &channels::drv, &channels::stg, &channels::cpl,
        &channels::bkp,         &channels::nfs,        &channels::rpc, &channels::dbg, &channels::vhd,
        &channels::mnt,         &channels::dt};
    for (const logging::log_channel_t* const channel : all)
        channel->info("x");
    EXPECT_EQ("       | x\n"
              "dmn    | x\n"
              "cli    | x\n"
              "srv    | x\n"
              "prt    | x\n"
              "vcb    | x\n"
              "vcb    | x\n"
              "drv    | x\n"
              "stg    | x\n"
              "cpl    | x\n"
              "bkp    | x\n"
              "nfs    | x\n"
              "rpc    | x\n"
              "vhd    | x\n"
              "mnt    | x\n"
              "dt     | x\n",
              Written());
}

TEST_F(Channels, TwoObjectsCarryTheTagVcb)
{
    EXPECT_NE(&channels::vcb, &channels::vcb_second);
    channels::vcb.info("a");
    channels::vcb_second.info("b");
    EXPECT_EQ("vcb    | a\nvcb    | b\n", Written());
}

TEST_F(Channels, StandBeforeMain)
{
    // The log's own, one of each channel but dbg, and the one asked with.
    EXPECT_EQ(1 + 16 + 1, logging::GetProcessLog().use_count());
}

TEST_F(Channels, DbgNeverReachesTheProcessLog)
{
    channels::dbg.info("a");
    channels::dbg.error("b");
    EXPECT_EQ("", Written());
    logging::GetProcessLog()->set_mask_sensitive(true);
    EXPECT_EQ("secret", channels::dbg.mask("secret"));
    EXPECT_EQ("****", channels::cli.mask("secret"));
    logging::GetProcessLog()->set_mask_sensitive(false);
}

// Only the lack of memory for its lines tells of a message that goes nowhere.
TEST_F(Channels, DbgFormsItsLinesInFull)
{
    FailNextAllocation();
    channels::dbg.info("longer than what a string holds without memory");
    EXPECT_TRUE(HasAllocationFailed());
}
