// What the library builds once in a process, and what is reported through it, while memory runs out.

#include <stdexcept>
#include <string>
#include <utility>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/context/agent_options.h"
#include "nelvo/context/common_lib_ctx.h"
#include "nelvo/context/error_report.h"
#include "nelvo/context/path_access.h"
#include "nelvo/context/set_agent_option.h"
#include "nelvo/core/util/str.h"
#include "nelvo/io/cout_multiplexor.h"
#include "nelvo/monitoring/thread_counters.h"
#include "nelvo/monitoring/thread_state.h"
#include "nelvo/synch/stop_events.h"
#include "nelvo/synch/thread_context.h"
#include "tests/faults/allocation_sweep.h"
#include "tests/faults/swept_listener.h"
#include "tests/faults/swept_log.h"

namespace
{

const std::string kText = "the quick brown fox jumps over it";

class ReportsWithoutMemory : public testing::Test
{
protected:
    ReportsWithoutMemory() { GetCommonLibCtx()->GetCoutMultiplexor().add_target(m_listener); }
    ~ReportsWithoutMemory() override
    {
        GetCommonLibCtx()->GetCoutMultiplexor().remove_target(m_listener.get());
    }

    swept_log_t m_log;
    const boost::shared_ptr<swept_listener_t> m_listener = boost::make_shared<swept_listener_t>();
};

} // namespace

TEST(ContextWithoutMemory, IsBuiltOrThrows)
{
    boost::shared_ptr<CCommonLibCtx> context;
    SweepAllocations({[&] { context = boost::make_shared<CCommonLibCtx>(); },
                      [&]
                      {
                          const auto built = std::exchange(context, nullptr);
                          return built != nullptr && built->FindDevPool(0) != nullptr ? "built" : "none";
                      },
                      "built", "none"});
}

TEST(ContextWithoutMemory, OfTheProcessIsBuiltByTheFirstCallThatHasMemory)
{
    SweepFirstUse([] { security::CheckPathAccess("/a/path/that/is/not/short/at/all"); });
    EXPECT_NE(nullptr, GetCommonLibCtx()->FindDevPool(0));
}

TEST(ContextWithoutMemory, WhatElseTheProcessHasOnceIsBuiltSo)
{
    SweepFirstUse([] { monitoring::CThreadStatesCollection::GetInstance(); });
    SweepFirstUse([] { synch::CStopEvtCollection::GetInstance(); });
    SweepFirstUse([] { synch::CThreadContext::GetCurrent(); });
    SweepFirstUse([] { GetAgentOptions(); });
    SweepFirstUse([] { workload::ReadCounters().Start(); });
}

TEST(ContextWithoutMemory, PathIsAskedAboutOrThrows)
{
    SweepAllocations({[] { security::CheckPathAccess("/a/path/that/is/not/short/at/all"); },
                      [] { return "asked"; }, "asked"});
}

TEST(ContextWithoutMemory, PoolsAreDestroyedOrItThrows)
{
    swept_log_t log;
    const auto pool = boost::make_shared<io::io_dev_pool_t>();
    CCommonLibCtx context;
    SweepAllocations({[&] { context.DestroyConnectionPools(); },
                      [&]
                      {
                          log.Taken();
                          const std::uint32_t free = context.GetDevRegistry().AllocPoolId();
                          context.GetDevRegistry().AddPool(1, pool);
                          return std::to_string(free);
                      },
                      "1"});
}

TEST_F(ReportsWithoutMemory, FailureReachesTheListenersWholeOrThrows)
{
    const std::runtime_error failure(kText);
    SweepAllocations({[&] { io::ReportError(failure); }, [&] { return m_listener->text(); },
                      "--err:\n" + kText + ":err--\n", ""});
    SweepAllocations({[&] { io::ReportError("Cannot open it: ", failure); },
                      [&] { return m_listener->text(); }, "--err:\nCannot open it: " + kText + ":err--\n",
                      ""});
}

TEST_F(ReportsWithoutMemory, FailureThatIsLoggedTooReachesTheListenersWholeOrThrows)
{
    const std::runtime_error failure(kText);
    const auto result = [&]
    {
        m_log.Taken();
        return m_listener->text();
    };
    SweepAllocations({[&] { io::ReportAndLogError(failure); }, result, "--err:\n" + kText + ":err--\n", ""});
    SweepAllocations({[&] { io::ReportAndLogError(failure, "Cannot open [%1].", kText); }, result,
                      "--err:\nCannot open [" + kText + "].\n" + kText + ":err--\n", ""});
}

TEST(AgentOptionsWithoutMemory, OneIsSetOrThrowsAndStays)
{
    swept_log_t log;
    CAgentOptions options;
    const std::string name = "NotificationTimeoutSec";
    const std::string value = "90 and a tail that is not looked at";
    SweepAllocations({[&] { SetAgentOption(options, name, value); },
                      [&]
                      {
                          log.Taken();
                          const std::uint32_t timeout = options.GetNotificationTimeoutSec();
                          SetAgentOption(options, name, "60");
                          log.Taken();
                          return std::to_string(timeout);
                      },
                      "90", "60"});
}
