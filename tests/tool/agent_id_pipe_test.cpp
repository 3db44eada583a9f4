#include <cerrno>
#include <cstdio>

#include <gtest/gtest.h>

#include "tool/agent_id.h"

// A pipe of the test's own in the place of the C library's: its first read gives the bytes, the second
// fails, and any later one meets the end.

namespace
{

const char* g_bytes = nullptr;
int g_reads = 0;
int g_closes = 0;

ssize_t Read(void* /*cookie*/, char* buffer, std::size_t size)
{
    ++g_reads;
    if (g_reads == 1)
        return ::stpncpy(buffer, g_bytes, size) - buffer;
    if (g_reads == 2)
    {
        errno = EIO;
        return -1;
    }
    return 0;
}

bool IsFound(const char* bytes)
{
    g_bytes = bytes;
    g_reads = 0;
    g_closes = 0;
    Guid id;
    return GetDmidecodeAgentId(id);
}

} // namespace

extern "C" FILE* popen(const char* /*command*/, const char* mode)
{
    return ::fopencookie(nullptr, mode, {Read, nullptr, nullptr, nullptr});
}

extern "C" int pclose(FILE* pipe)
{
    ++g_closes;
    return std::fclose(pipe);
}

TEST(DmidecodePipeThatFails, EndsTheLine)
{
    EXPECT_FALSE(IsFound("UUID: 00112233-4455-6677-8899-AABBCCDDEEFF"));
    EXPECT_EQ(2, g_reads);
    EXPECT_EQ(1, g_closes);
}

TEST(DmidecodePipeThatFails, DoublesTheLastByteAsTheEndDoes)
{
    EXPECT_TRUE(IsFound("UUID: 00112233-4455-6677-8899-AABBCCDDEEF"));
    EXPECT_EQ(2, g_reads);
}

TEST(DmidecodePipeThatFails, IsNotMissedBehindTheFirstLine)
{
    EXPECT_TRUE(IsFound("UUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n"));
    EXPECT_EQ(1, g_reads);
    EXPECT_EQ(1, g_closes);
}
