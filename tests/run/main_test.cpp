#include <csignal>
#include <unistd.h>

#include <gtest/gtest.h>

TEST(Main, LetsAnExceptionOfAnotherTypePass)
{
    EXPECT_EXIT(::execl(ODD_FAILURE, ODD_FAILURE, nullptr), testing::KilledBySignal(SIGABRT),
                "^terminate called after throwing an instance of 'int'\n$");
}
