#include "nelvo/synch/manual_reset_event.h"

#include <thread>
#include <type_traits>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

using event_t = posix::posix_manual_reset_event_t;

TEST(ManualResetEvent, BeginsAsTold)
{
    EXPECT_FALSE(event_t(false).wait(0));
    EXPECT_TRUE(event_t(true).wait(0));
    static_assert(!std::is_polymorphic_v<event_t>);
}

TEST(ManualResetEvent, StaysSetForAllWhoWait)
{
    event_t event(false);
    event.set();
    for (const std::int32_t timeout : {0, 1, 0x7fffffff, -1})
        EXPECT_TRUE(event.wait(timeout)) << timeout;
    std::thread([&] { EXPECT_TRUE(event.wait(-1)); }).join();
    EXPECT_TRUE(event.wait(0));
}

TEST(ManualResetEvent, SettingAndResettingTwiceDoesNoHarm)
{
    event_t event(true);
    event.set();
    EXPECT_TRUE(event.wait(0));
    event.reset();
    event.reset();
    EXPECT_FALSE(event.wait(0));
    event.set();
    EXPECT_TRUE(event.wait(0));
}

TEST(ManualResetEvent, TimeoutThatPassesIsNoFailure)
{
    event_t event(false);
    EXPECT_FALSE(event.wait(1));
    event.set();
    EXPECT_TRUE(event.wait(1));
}

TEST(ManualResetEvent, WaiterKeepsWhatIsShared)
{
    auto event = boost::make_shared<event_t>(false);
    std::thread waiter([share = event] { EXPECT_TRUE(share->wait(-1)); });
    event->set();
    event.reset();
    waiter.join();
}

TEST(ManualResetEvent, PassesWorkBetweenThreads)
{
    event_t ping(false);
    event_t pong(false);
    int count = 0;
    std::thread other(
        [&]
        {
            for (int i = 0; i != 1000 && ping.wait(-1); ++i)
            {
                ping.reset();
                ++count;
                pong.set();
            }
        });
    for (int i = 0; i != 1000; ++i)
    {
        EXPECT_EQ(i, count);
        ping.set();
        EXPECT_TRUE(pong.wait(-1));
        pong.reset();
    }
    other.join();
    EXPECT_EQ(1000, count);
}
