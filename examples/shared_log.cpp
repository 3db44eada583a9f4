// Several processes that are given the same log. A log's file is locked while it is open, so that each has a
// file of its own:
//
//   shared_log a.log 3
//
// The first process gets a.log, the second a.1.log and the third a.2.log; when one ends, the next to come
// gets its name. Without a name there is no file, and the lines go to standard output, between two lines of
// 74 slashes:
//
//   shared_log "" 1

#include <cerrno>
#include <exception>
#include <iostream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/parse.h"
#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/receiver/log_start.h"

namespace
{

const logging::log_channel_t shared_log("shared"); // NOLINT(cert-err58-cpp): there is memory at the start

// This program once more, with what it is told. Returns when that has ended.
void RunAnother(const std::string& name, const std::string& count)
{
    const pid_t child = ::fork();
    const int error = errno;
    if (child == -1)
        throw posix::errno_exc_t("Failed to start a process.", error);
    if (child == 0)
    {
        ::execl("/proc/self/exe", "shared_log", name.c_str(), count.c_str(), nullptr);
        ::_exit(1);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) == -1 && errno == EINTR)
    {
    }
    if (status != 0)
        throw exc::runtime_exc_t("A process failed with the status %1.", status);
}

void Run(const std::string& name, long count)
{
    logging::start_log(name, false, false, true);
    const std::string path = logging::get_log_file_path();
    shared_log.info("%1 more to come", count - 1);
    std::cout << "My log is " << (path.empty() ? "standard output" : path) << std::endl;
    if (count > 1)
        RunAnother(name, std::to_string(count - 1));
}

} // namespace

int main(int argc, char* argv[])
{
    try
    {
        if (argc != 3)
            throw exc::runtime_exc_t("Usage: shared_log NAME COUNT");
        Run(argv[1], util::ParseLong(argv[2]));
    }
    catch (std::exception& e)
    {
        std::cerr << e.what() << std::endl;
        return 1;
    }
    return 0;
}
