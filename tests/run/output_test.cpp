#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/run/machine.h"

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

using stream_t = machine_t::stream_t;

namespace
{

const char kId[] = "{00112233-4455-6677-8899-aabbccddeeff}";
const char kNotWritten[] = "Failed to write agent id to standard output.\n";

// While the tool waits for its grandchild, dmidecode, this notes where its descriptors lead and how they
// are opened: 0 is read-only.
const char kNoteDescriptors[] =
    "read -r pid name state parent rest < /proc/$PPID/stat\n"
    "for descriptor in 0 1 2; do\n"
    "    mode=$(sed -n 's/^flags:.*\\(.\\)$/\\1/p' /proc/$parent/fdinfo/$descriptor)\n"
    "    echo \"$descriptor $(readlink /proc/$parent/fd/$descriptor) $mode\"\n"
    "done > /tmp/descriptors";

} // namespace

TEST(Output, IsTheIdAndALineFeed)
{
    machine_t machine;
    machine.AgentFile(kId);

    EXPECT_THAT(machine.Run(), Prints("{00112233-4455-6677-8899-aabbccddeeff}\n"));
    EXPECT_EQ(kId, machine.Read("/etc/nelvoagentid"));
}

TEST(Output, StandardInputIsNotNeeded)
{
    machine_t machine;
    machine.DmidecodePrints("UUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n");
    machine.StandardInput(stream_t::kClosed);

    EXPECT_THAT(machine.Run(), Prints("{33221100-5544-7766-8899-aabbccddeeff}\n"));
    EXPECT_FALSE(machine.Exists("/etc/nelvoagentid"));
}

TEST(Output, FullDeviceIsAFailure)
{
    machine_t machine;
    machine.AgentFile(kId);
    machine.StandardOutput(stream_t::kFull);

    EXPECT_THAT(machine.Run(), FailsWith(kNotWritten));
    EXPECT_EQ(kId, machine.Read("/etc/nelvoagentid"));
}

TEST(Output, ClosedOutputIsAFailure)
{
    machine_t machine;
    machine.AgentFile(kId);
    machine.StandardOutput(stream_t::kClosed);

    EXPECT_THAT(machine.Run(), FailsWith(kNotWritten));
    EXPECT_EQ(kId, machine.Read("/etc/nelvoagentid"));
}

TEST(Output, NewIdIsStoredBeforeItIsPrinted)
{
    machine_t machine;
    machine.StandardOutput(stream_t::kFull);
    const run_t failed = machine.Run();
    machine.StandardOutput(stream_t::kKept);
    const run_t good = machine.Run();

    EXPECT_THAT(failed, FailsWith(kNotWritten));
    EXPECT_THAT(good, Prints(IsNewId()));
    EXPECT_EQ(good.out, machine.Read("/etc/nelvoagentid") + "\n");
}

TEST(Output, BrokenPipeEndsTheRunByItsSignal)
{
    machine_t machine;
    machine.AgentFile(kId);
    machine.StandardOutput(stream_t::kBrokenPipe);

    EXPECT_THAT(machine.Run(), Ends("", "", 128 + SIGPIPE));
    EXPECT_EQ(kId, machine.Read("/etc/nelvoagentid"));
}

TEST(Output, ClosedErrorOutputDoesNotMatterToAGoodRun)
{
    machine_t machine;
    machine.AgentFile(kId);
    machine.StandardError(stream_t::kClosed);

    EXPECT_THAT(machine.Run(), Prints("{00112233-4455-6677-8899-aabbccddeeff}\n"));
    EXPECT_EQ(kId, machine.Read("/etc/nelvoagentid"));
}

TEST(Output, FailureWithoutErrorOutputIsTheStatusAlone)
{
    for (const stream_t stream : {stream_t::kClosed, stream_t::kFull})
    {
        machine_t machine;
        machine.StandardError(stream);

        EXPECT_THAT(machine.Run({"--help"}), FailsWith(""));
        EXPECT_FALSE(machine.Exists("/etc/nelvoagentid"));
    }
}

TEST(Output, ClosedOutputsLeadToANullDeviceThatTakesNothing)
{
    machine_t machine;
    machine.Dmidecode(kNoteDescriptors);
    machine.StandardOutput(stream_t::kClosed);
    machine.StandardError(stream_t::kClosed);

    EXPECT_THAT(machine.Run(), FailsWith(""));
    EXPECT_EQ("0 /dev/null 0\n1 /dev/null 0\n2 /dev/null 0\n", machine.Read("/tmp/descriptors"));
    EXPECT_EQ(38u, machine.Read("/etc/nelvoagentid").size());
}

// Descriptor 0 stays free for what is opened next.
TEST(Output, AllDescriptorsClosedAtTheStart)
{
    machine_t machine;
    machine.Dmidecode(kNoteDescriptors);
    machine.StandardInput(stream_t::kClosed);
    machine.StandardOutput(stream_t::kClosed);
    machine.StandardError(stream_t::kClosed);

    EXPECT_THAT(machine.Run(), FailsWith(""));
    EXPECT_THAT(machine.Read("/tmp/descriptors"), Not(HasSubstr("0 /dev/null")));
    EXPECT_THAT(machine.Read("/tmp/descriptors"), EndsWith("\n1 /dev/null 0\n2 /dev/null 0\n"));
    EXPECT_EQ(38u, machine.Read("/etc/nelvoagentid").size());
}

TEST(Output, AllDescriptorsClosedLeavesTheFirmwareReadable)
{
    machine_t machine;
    machine.DmidecodePrints("UUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n");
    machine.StandardInput(stream_t::kClosed);
    machine.StandardOutput(stream_t::kClosed);
    machine.StandardError(stream_t::kClosed);

    EXPECT_THAT(machine.Run(), FailsWith(""));
    EXPECT_FALSE(machine.Exists("/etc/nelvoagentid"));
}
