#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/run/machine.h"

namespace
{

const char kPrinted[] = "{33221100-5544-7766-8899-aabbccddeeff}\n";

std::string PrintedWith(const std::string& text)
{
    machine_t machine;
    machine.Sysfs(text);
    const run_t run = machine.Run();

    EXPECT_EQ("", run.err);
    EXPECT_EQ(0, run.status);
    EXPECT_FALSE(machine.Exists("/etc/nelvoagentid"));
    return run.out;
}

// The source gives nothing, and as the last one it leaves the run to make an id.
void ExpectNoId(machine_t& machine)
{
    const run_t run = machine.Run();

    EXPECT_THAT(run, Prints(IsNewId()));
    EXPECT_EQ(run.out, machine.Read("/etc/nelvoagentid") + "\n");
}

void ExpectNoId(const std::string& text)
{
    machine_t machine;
    machine.Sysfs(text);
    ExpectNoId(machine);
}

} // namespace

TEST(SysfsSource, IdIsPrintedWithItsFirstThreeGroupsReversedAndIsNotStored)
{
    EXPECT_EQ(kPrinted, PrintedWith("00112233-4455-6677-8899-aabbccddeeff\n"));
}

TEST(SysfsSource, TakesWhatTheAgentFileTakes)
{
    EXPECT_EQ(kPrinted, PrintedWith("\n {00112233-4455-6677-8899-AABBCCDDEEFF} and more"));
}

TEST(SysfsSource, AllOnesIdIsAnId)
{
    EXPECT_EQ("{ffffffff-ffff-ffff-ffff-ffffffffffff}\n",
              PrintedWith("FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF\n"));
}

TEST(SysfsSource, GivesTheSameIdToEveryRun)
{
    machine_t machine;
    machine.Sysfs("00112233-4455-6677-8899-aabbccddeeff\n");

    EXPECT_THAT(machine.Run(), Prints(kPrinted));
    EXPECT_THAT(machine.Run(), Prints(kPrinted));
    EXPECT_FALSE(machine.Exists("/etc/nelvoagentid"));
}

TEST(SysfsSource, AgentFileWithoutIdStaysAsItIs)
{
    machine_t machine;
    machine.AgentFile("no id");
    machine.Sysfs("00112233-4455-6677-8899-aabbccddeeff\n");

    EXPECT_THAT(machine.Run(), Prints(kPrinted));
    EXPECT_EQ("no id", machine.Read("/etc/nelvoagentid"));
}

TEST(SysfsSource, AllZeroIdIsNoId) { ExpectNoId("00000000-0000-0000-0000-000000000000\n"); }
TEST(SysfsSource, EmptyFileHoldsNoId) { ExpectNoId(""); }
TEST(SysfsSource, WordsHoldNoId) { ExpectNoId("Not Settable\n"); }

TEST(SysfsSource, DirectoryHoldsNoId)
{
    machine_t machine;
    machine.Folder("/sys/class/dmi/id/product_uuid");

    ExpectNoId(machine);
}

TEST(SysfsSource, LoopOfLinksHoldsNoId)
{
    machine_t machine;
    machine.Folder("/sys/class/dmi/id");
    machine.Link("/sys/class/dmi/id/product_uuid", "product_uuid");

    ExpectNoId(machine);
}

TEST(SysfsSource, FileInThePlaceOfAFolderHoldsNoId)
{
    machine_t machine;
    machine.File("/sys/class", "00112233-4455-6677-8899-aabbccddeeff\n");

    ExpectNoId(machine);
}

TEST(SysfsSource, UnreadableFileHoldsNoId)
{
    machine_t machine;
    machine.Sysfs("00112233-4455-6677-8899-aabbccddeeff\n");
    machine.SetMode("/sys/class/dmi/id/product_uuid", 0);
    machine.ObeyFileModes();

    ExpectNoId(machine);
}

TEST(SysfsSource, OnlySuccessChangesTheCallersId)
{
    const char kNotFound[] = "not found {99999999-9999-9999-9999-999999999999}\n";
    const std::vector<std::pair<std::string, std::string>> answers = {
        {"00112233-4455-6677-8899-aabbccddeeff\n", std::string("found ") + kPrinted},
        {"00000000-0000-0000-0000-000000000000\n", kNotFound},
        {"Not Settable\n", kNotFound},
        {"", kNotFound},
    };
    for (const auto& [text, answer] : answers)
    {
        machine_t machine;
        machine.Sysfs(text);
        EXPECT_THAT(machine.Ask("sysfs"), Prints(answer)) << text;
    }
    machine_t machine;
    EXPECT_THAT(machine.Ask("sysfs"), Prints(kNotFound));
}
