#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/run/machine.h"

TEST(Generation, NewIdIsKeptForTheNextRun)
{
    machine_t machine;
    const run_t first = machine.Run();
    const run_t second = machine.Run();

    EXPECT_THAT(first, Prints(IsNewId()));
    EXPECT_THAT(second, Prints(first.out));
    EXPECT_EQ(first.out, machine.Read("/etc/nelvoagentid") + "\n");
}

TEST(Generation, EachMachineGetsAnIdOfItsOwn)
{
    machine_t one;
    machine_t other;

    const run_t first = one.Run();
    const run_t second = other.Run();

    EXPECT_THAT(first, Prints(IsNewId()));
    EXPECT_THAT(second, Prints(IsNewId()));
    EXPECT_NE(first.out, second.out);
}

TEST(Generation, StoredIdOutlivesTheFirmwareThatComesLater)
{
    machine_t machine;
    const run_t first = machine.Run();
    machine.DmidecodePrints("UUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n");

    EXPECT_THAT(first, Prints(IsNewId()));
    EXPECT_THAT(machine.Run(), Prints(first.out));
    EXPECT_EQ(first.out, machine.Read("/etc/nelvoagentid") + "\n");
}

TEST(Generation, LostAgentFileMeansANewId)
{
    machine_t machine;
    const run_t first = machine.Run();
    machine.Remove("/etc/nelvoagentid");
    const run_t second = machine.Run();

    EXPECT_THAT(first, Prints(IsNewId()));
    EXPECT_THAT(second, Prints(IsNewId()));
    EXPECT_NE(first.out, second.out);
    EXPECT_EQ(second.out, machine.Read("/etc/nelvoagentid") + "\n");
}

TEST(Generation, LockOfAnotherOnTheFileIsNotWaitedFor)
{
    machine_t machine;
    const run_t run = machine.Shell("flock /etc/nelvoagentid nelvoagentid");

    EXPECT_THAT(run, Prints(IsNewId()));
    EXPECT_EQ(run.out, machine.Read("/etc/nelvoagentid") + "\n");
}

// No lock guards the file: the last writer wins, and both have printed an id.
TEST(Generation, OneOfTwoRunsAtOnceIsTheLastWriter)
{
    machine_t machine;
    const run_t run = machine.Shell("nelvoagentid > /tmp/one & one=$!\n"
                                    "nelvoagentid > /tmp/other && wait $one");
    const std::string stored = machine.Read("/etc/nelvoagentid") + "\n";

    EXPECT_THAT(machine.Read("/tmp/one"), IsNewId());
    EXPECT_THAT(machine.Read("/tmp/other"), IsNewId());
    EXPECT_TRUE(stored == machine.Read("/tmp/one") || stored == machine.Read("/tmp/other")) << stored;
    EXPECT_THAT(run, Prints(""));
}
