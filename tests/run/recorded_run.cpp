// The run with a log whose lines tell their severity (tests/logging/recorded_format.h). A failure is printed
// behind its type, with its number and its trace.

#include <iostream>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "tool/agent_id.h"

int main(int argc, char* argv[])
try
{
    RunAgentIdTool(argc, argv);
    return 0;
}
catch (posix::errno_exc_t& e)
{
    std::cerr << "errno_exc_t " << e.GetErrorCode() << ": " << e.GetFullText() << std::endl;
    return 1;
}
catch (exc::runtime_exc_t& e)
{
    std::cerr << "runtime_exc_t " << e.GetErrorCode() << ": " << e.GetFullText() << std::endl;
    return 1;
}
