#include "nelvo/context/set_agent_option.h"

#include "nelvo/context/agent_options.h"
#include "tests/support/pthread_calls.h"

using SetAgentOptionMutex = PthreadCalls;

// That of the log, for its line. A thread's first line asks for more.
TEST_F(SetAgentOptionMutex, IsTheLogsAlone)
{
    CAgentOptions options;
    SetAgentOption(options, "EnableTrafficControl", "true");
    EXPECT_EQ((calls_t{"lock", "unlock"}),
              Calls([&] { SetAgentOption(options, "EnableTrafficControl", "false"); }));
    EXPECT_FALSE(options.GetEnableTrafficControl());
}
