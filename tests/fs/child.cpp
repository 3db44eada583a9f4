#include "tests/fs/child.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/support/private_disk.h"
#include "tests/support/temp_folder.h"

void InChild(const std::function<void()>& body)
{
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0)
    {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        try
        {
            body();
        }
        catch (const std::exception& e)
        {
            ADD_FAILURE() << e.what();
        }
        std::fflush(nullptr);
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    EXPECT_EQ(child, ::waitpid(child, &status, 0)) << std::strerror(errno);
    EXPECT_EQ(0, status);
}

void InPrivateRoot(const std::function<void()>& body)
{
    const temp_folder_t folder;
    InChild(
        [&]
        {
            const private_disk_t disk(folder.path(), 1048576);
            ASSERT_EQ(0, ::chroot(folder.path().c_str())) << std::strerror(errno);
            ASSERT_EQ(0, ::chdir("/")) << std::strerror(errno);
            body();
        });
}

void Redirect(int descriptor, const std::string& path)
{
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    EXPECT_EQ(descriptor, ::dup2(file, descriptor)) << path;
    ::close(file);
}
