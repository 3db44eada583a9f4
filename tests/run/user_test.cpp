#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/run/machine.h"

using testing::IsEmpty;

namespace
{

// Whatever the options are, and where the caller may write to every folder.
void ExpectDenial(const std::vector<std::string>& options)
{
    machine_t machine;
    for (const char* const folder : {"/etc", "/run", "/work"})
        machine.SetMode(folder, 01777);
    machine.StartAsNobody();
    const run_t run = machine.Run(options);

    EXPECT_EQ("", run.out);
    EXPECT_EQ("Permission denied\n", run.err);
    EXPECT_EQ(1, run.status);
    EXPECT_THAT(machine.NewPaths(), IsEmpty());
}

} // namespace

TEST(User, OtherThanRootIsDeniedAndLeavesNoFile) { ExpectDenial({}); }
TEST(User, OtherThanRootGetsNoLog) { ExpectDenial({"--log", "/tmp/x.log"}); }
TEST(User, OtherThanRootIsDeniedBeforeABadOptionIsSeen) { ExpectDenial({"--help", "--log"}); }

TEST(User, OtherThanRootDoesNotLearnTheId)
{
    machine_t machine;
    machine.AgentFile("{00112233-4455-6677-8899-aabbccddeeff}");
    machine.StartAsNobody();

    EXPECT_EQ("", machine.Run().out);
}

TEST(User, RootWithoutPowerOverFileModesIsRoot)
{
    machine_t machine;
    machine.AgentFile("{00112233-4455-6677-8899-aabbccddeeff}");
    machine.ObeyFileModes();

    EXPECT_EQ("{00112233-4455-6677-8899-aabbccddeeff}\n", machine.Run().out);
}
