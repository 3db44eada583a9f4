#include "tests/fs/child.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

void InChild(const std::function<void()>& body)
{
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0)
    {
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

void InPrivateMounts(const std::function<void()>& body)
{
    InChild(
        [&]
        {
            ASSERT_EQ(0, ::unshare(CLONE_NEWNS)) << std::strerror(errno);
            ASSERT_EQ(0, ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr)) << std::strerror(errno);
            body();
        });
}

void MountEmpty(const std::string& folder, const std::string& bytes)
{
    EXPECT_EQ(0, ::mount("none", folder.c_str(), "tmpfs", 0, ("size=" + bytes).c_str()))
        << std::strerror(errno);
}

void Redirect(int descriptor, const std::string& path)
{
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    EXPECT_EQ(descriptor, ::dup2(file, descriptor)) << path;
    ::close(file);
}
