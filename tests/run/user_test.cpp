#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/run/machine.h"

using testing::IsEmpty;
using testing::StartsWith;

namespace
{

const char kId[] = "{00112233-4455-6677-8899-aabbccddeeff}";
const char kPrinted[] = "{00112233-4455-6677-8899-aabbccddeeff}\n";

// Whatever the options are, and where the caller may write to every folder.
void ExpectDenial(const std::vector<std::string>& options)
{
    machine_t machine;
    for (const char* const folder : {"/etc", "/run", "/work"})
        machine.SetMode(folder, 01777);
    machine.StartAsNobody();

    EXPECT_THAT(machine.Run(options), FailsWith("Permission denied\n"));
    EXPECT_THAT(machine.NewPaths(), IsEmpty());
}

} // namespace

TEST(User, OtherThanRootIsDeniedAndLeavesNoFile) { ExpectDenial({}); }
TEST(User, OtherThanRootGetsNoLog) { ExpectDenial({"--log", "/tmp/x.log"}); }
TEST(User, OtherThanRootIsDeniedBeforeABadOptionIsSeen) { ExpectDenial({"--help", "--log"}); }

TEST(User, OtherThanRootDoesNotLearnTheId)
{
    machine_t machine;
    machine.AgentFile(kId);
    machine.StartAsNobody();

    EXPECT_THAT(machine.Run(), FailsWith("Permission denied\n"));
    EXPECT_EQ(kId, machine.Read("/etc/nelvoagentid"));
}

TEST(User, EffectiveRootIsRootWhoeverTheRealUserIs)
{
    machine_t machine;
    machine.AgentFile(kId);
    machine.StartWithRealUser(machine_t::kNobody);

    EXPECT_THAT(machine.Run(), Prints(kPrinted));
    EXPECT_EQ(kId, machine.Read("/etc/nelvoagentid"));
}

// A process of two users may not look at itself, and a sanitizer that looks for leaks says so behind the
// text.
TEST(User, RealRootIsDeniedIfItIsNotTheEffectiveUser)
{
    machine_t machine;
    machine.AgentFile(kId);
    machine.StartAsNobody();
    machine.StartWithRealUser(0);

    EXPECT_THAT(machine.Run(), FailsWith(StartsWith("Permission denied\n")));
    EXPECT_EQ(kId, machine.Read("/etc/nelvoagentid"));
}

TEST(User, RootWithoutPowerOverFileModesIsRoot)
{
    machine_t machine;
    machine.AgentFile(kId);
    machine.ObeyFileModes();

    EXPECT_THAT(machine.Run(), Prints(kPrinted));
    EXPECT_EQ(kId, machine.Read("/etc/nelvoagentid"));
}
