#include <cerrno>
#include <exception>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

#include "tool/agent_id.h"

namespace
{

// A descriptor that the caller closed would go to the next file that is opened, and what is meant for
// standard output would land there. /dev/null takes its place, read-only, so that a write to it fails.
void OccupyIfClosed(int descriptor)
{
    if (::fcntl(descriptor, F_GETFD) != -1 || errno != EBADF)
        return;
    const int null = ::open("/dev/null", O_RDONLY);
    if (null == -1 || null == descriptor)
        return;
    ::dup2(null, descriptor);
    ::close(null);
}

} // namespace

int main(int argc, char* argv[])
{
    OccupyIfClosed(STDOUT_FILENO);
    OccupyIfClosed(STDERR_FILENO);
    try
    {
        RunAgentIdTool(argc, argv);
    }
    catch (std::exception& e)
    {
        std::cerr << e.what() << std::endl;
        return 1;
    }
    return 0;
}
