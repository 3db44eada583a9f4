#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/run/machine.h"

// The first source. Where it gives no id and the test wants to see the chain go on, sysfs gives one.

namespace
{

const char kBare[] = "00112233-4455-6677-8899-aabbccddeeff";
const char kBraced[] = "{00112233-4455-6677-8899-aabbccddeeff}";
const char kPrinted[] = "{00112233-4455-6677-8899-aabbccddeeff}\n";

const char kFirmwareId[] = "D0C0B0A0-F0E0-2010-3040-5060708090A1\n";
const char kFirmwarePrinted[] = "{a0b0c0d0-e0f0-1020-3040-5060708090a1}\n";

// What a file of this text leads to: its id, or the one from the firmware. The file stays as it is.
std::string PrintedWith(const std::string& text)
{
    machine_t machine;
    machine.Sysfs(kFirmwareId);
    machine.AgentFile(text);
    const std::string before = machine.State("/etc/nelvoagentid");
    const run_t run = machine.Run();

    EXPECT_EQ("", run.err);
    EXPECT_EQ(0, run.status);
    EXPECT_EQ(before, machine.State("/etc/nelvoagentid"));
    return run.out;
}

// The same for a machine on which the path of the agent file cannot be read: what stands there, stays.
void ExpectFirmwareId(machine_t& machine)
{
    machine.Sysfs(kFirmwareId);
    const std::string before = machine.State("/etc/nelvoagentid");

    EXPECT_THAT(machine.Run(), Prints(kFirmwarePrinted));
    EXPECT_EQ(before, machine.State("/etc/nelvoagentid"));
}

} // namespace

TEST(AgentFile, BracedIdIsPrintedAsItStands) { EXPECT_EQ(kPrinted, PrintedWith(kBraced)); }

TEST(AgentFile, BareUpperCaseIdIsPrintedBracedInLowerCase)
{
    EXPECT_EQ(kPrinted, PrintedWith("00112233-4455-6677-8899-AABBCCDDEEFF"));
}

TEST(AgentFile, OneBraceIsEnough)
{
    EXPECT_EQ(kPrinted, PrintedWith("{00112233-4455-6677-8899-aabbccddeeff"));
    EXPECT_EQ(kPrinted, PrintedWith("00112233-4455-6677-8899-aabbccddeeff}"));
}

TEST(AgentFile, WhiteSpaceBeforeTheIdIsSkipped)
{
    EXPECT_EQ(kPrinted, PrintedWith(std::string(" \t\v\f\r\n\n ") + kBraced));
}

TEST(AgentFile, TextAfterTheFirstTokenIsIgnored)
{
    EXPECT_EQ(kPrinted, PrintedWith(std::string(kBraced) + "\nand {more} of it\n"));
    EXPECT_EQ(kPrinted, PrintedWith(std::string(kBare) + "\r\n"));
}

TEST(AgentFile, OnlyTheFirstTokenCounts)
{
    EXPECT_EQ(kFirmwarePrinted, PrintedWith(std::string("id: ") + kBraced));
}

TEST(AgentFile, ComesBeforeTheFirmware)
{
    machine_t machine;
    machine.AgentFile(kBraced);
    machine.DmidecodePrints("UUID: 11111111-1111-1111-1111-111111111111\n");
    machine.Sysfs("22222222-2222-2222-2222-222222222222\n");

    EXPECT_THAT(machine.Run(), Prints(kPrinted));
    EXPECT_EQ(kBraced, machine.Read("/etc/nelvoagentid"));
}

TEST(AgentFile, GivesTheSameIdToEveryRun)
{
    machine_t machine;
    machine.AgentFile(kBraced);

    EXPECT_THAT(machine.Run(), Prints(kPrinted));
    EXPECT_THAT(machine.Run(), Prints(kPrinted));
    EXPECT_EQ(kBraced, machine.Read("/etc/nelvoagentid"));
}

TEST(AgentFile, EmptyFileHoldsNoId) { EXPECT_EQ(kFirmwarePrinted, PrintedWith("")); }
TEST(AgentFile, WhiteSpaceHoldsNoId) { EXPECT_EQ(kFirmwarePrinted, PrintedWith(" \n\t\n")); }
TEST(AgentFile, LoneBraceHoldsNoId) { EXPECT_EQ(kFirmwarePrinted, PrintedWith("{")); }
TEST(AgentFile, WordsHoldNoId) { EXPECT_EQ(kFirmwarePrinted, PrintedWith("not an id\n")); }

TEST(AgentFile, AllZeroIdHoldsNoId)
{
    EXPECT_EQ(kFirmwarePrinted, PrintedWith("{00000000-0000-0000-0000-000000000000}"));
    EXPECT_EQ(kFirmwarePrinted, PrintedWith("00000000-0000-0000-0000-000000000000"));
}

TEST(AgentFile, AllOnesIdIsAnId)
{
    EXPECT_EQ("{ffffffff-ffff-ffff-ffff-ffffffffffff}\n",
              PrintedWith("{ffffffff-ffff-ffff-ffff-ffffffffffff}"));
}

TEST(AgentFile, MalformedIdHoldsNoId)
{
    EXPECT_EQ(kFirmwarePrinted, PrintedWith("{00112233-4455-6677-8899-aabbccddeef}"));
    EXPECT_EQ(kFirmwarePrinted, PrintedWith("{00112233-4455-6677-8899-aabbccddeefff}"));
    EXPECT_EQ(kFirmwarePrinted, PrintedWith("{00112233-4455-6677-8899-aabbccddeefg}"));
    EXPECT_EQ(kFirmwarePrinted, PrintedWith("{001122334-455-6677-8899-aabbccddeeff}"));
    EXPECT_EQ(kFirmwarePrinted, PrintedWith("{{00112233-4455-6677-8899-aabbccddeeff}}"));
}

TEST(AgentFile, ByteOrderMarkSpoilsTheId)
{
    EXPECT_EQ(kFirmwarePrinted, PrintedWith(std::string("\xEF\xBB\xBF") + kBraced));
}

TEST(AgentFile, ZeroByteBelongsToTheToken)
{
    EXPECT_EQ(kFirmwarePrinted, PrintedWith(std::string(1, '\0') + kBraced));
    EXPECT_EQ(kFirmwarePrinted, PrintedWith(kBraced + std::string(1, '\0')));
}

TEST(AgentFile, ZeroByteAfterABareIdEndsIt)
{
    EXPECT_EQ(kPrinted, PrintedWith(kBare + std::string("\0rest", 5)));
}

TEST(AgentFile, BinaryBytesHoldNoId)
{
    std::string bytes;
    for (int value = 0; value < 4096; ++value)
        bytes += static_cast<char>(value * 7 % 256);

    EXPECT_EQ(kFirmwarePrinted, PrintedWith(bytes));
}

TEST(AgentFile, HundredMebibytesWithoutABlankHoldNoId)
{
    machine_t machine;
    machine.HugeFile("/etc/nelvoagentid", "x", 100 << 20);

    ExpectFirmwareId(machine);
}

TEST(AgentFile, AbsentFileHoldsNoId)
{
    machine_t machine;
    ExpectFirmwareId(machine);
    EXPECT_FALSE(machine.Exists("/etc/nelvoagentid"));
}

TEST(AgentFile, DirectoryHoldsNoId)
{
    machine_t machine;
    machine.Folder("/etc/nelvoagentid");

    ExpectFirmwareId(machine);
}

TEST(AgentFile, DanglingLinkHoldsNoId)
{
    machine_t machine;
    machine.Link("/etc/nelvoagentid", "/etc/nothing");

    ExpectFirmwareId(machine);
    EXPECT_FALSE(machine.Exists("/etc/nothing"));
}

TEST(AgentFile, LinkIsFollowed)
{
    machine_t machine;
    machine.File("/etc/elsewhere", kBraced);
    machine.Link("/etc/nelvoagentid", "elsewhere");
    const std::string before = machine.State("/etc/nelvoagentid");

    EXPECT_THAT(machine.Run(), Prints(kPrinted));
    EXPECT_EQ(before, machine.State("/etc/nelvoagentid"));
    EXPECT_EQ(kBraced, machine.Read("/etc/elsewhere"));
}

TEST(AgentFile, LoopOfLinksHoldsNoId)
{
    machine_t machine;
    machine.Link("/etc/nelvoagentid", "nelvoagentid");

    ExpectFirmwareId(machine);
}

TEST(AgentFile, FileInThePlaceOfItsFolderHoldsNoId)
{
    machine_t machine;
    machine.Remove("/etc");
    machine.File("/etc", kBraced);

    ExpectFirmwareId(machine);
}

TEST(AgentFile, SocketHoldsNoId)
{
    machine_t machine;
    machine.Socket("/etc/nelvoagentid");

    ExpectFirmwareId(machine);
}

TEST(AgentFile, UnreadableFileHoldsNoId)
{
    machine_t machine;
    machine.AgentFile(kBraced);
    machine.SetMode("/etc/nelvoagentid", 0);
    machine.ObeyFileModes();

    ExpectFirmwareId(machine);
}

TEST(AgentFile, FileInAnUnreachableFolderHoldsNoId)
{
    machine_t machine;
    machine.AgentFile(kBraced);
    machine.SetMode("/etc", 0);
    machine.ObeyFileModes();

    ExpectFirmwareId(machine);
    machine.SetMode("/etc", 0755);
}

// ---- The file as it is written ----

TEST(AgentFile, HoldsTheNewIdAndNothingElse)
{
    machine_t machine;
    const run_t run = machine.Run();

    EXPECT_THAT(run, Prints(IsNewId()));
    EXPECT_EQ(run.out, machine.Read("/etc/nelvoagentid") + "\n");
}

TEST(AgentFile, ModeIsTheUmasksChoice)
{
    for (const auto& [umask, mode] : {std::pair(0, 0666), std::pair(022, 0644), std::pair(077, 0600)})
    {
        machine_t machine;
        machine.SetUmask(static_cast<mode_t>(umask));

        EXPECT_THAT(machine.Run(), Prints(IsNewId()));
        EXPECT_EQ(static_cast<mode_t>(mode), machine.Mode("/etc/nelvoagentid"));
    }
}

TEST(AgentFile, WithoutIdIsReplacedAndKeepsItsMode)
{
    machine_t machine;
    machine.AgentFile("a long text that is no id, and longer than any id could ever be\n");
    machine.SetMode("/etc/nelvoagentid", 0640);
    const run_t run = machine.Run();

    EXPECT_THAT(run, Prints(IsNewId()));
    EXPECT_EQ(run.out, machine.Read("/etc/nelvoagentid") + "\n");
    EXPECT_EQ(0640u, machine.Mode("/etc/nelvoagentid"));
}

TEST(AgentFile, EmptyOrAllZeroFileIsReplaced)
{
    for (const char* const text : {"", "\n", "{00000000-0000-0000-0000-000000000000}"})
    {
        machine_t machine;
        machine.AgentFile(text);
        const run_t run = machine.Run();

        EXPECT_THAT(run, Prints(IsNewId())) << text;
        EXPECT_EQ(run.out, machine.Read("/etc/nelvoagentid") + "\n") << text;
    }
}

TEST(AgentFile, UnreadableButWritableFileIsReplaced)
{
    machine_t machine;
    machine.AgentFile(kBraced);
    machine.SetMode("/etc/nelvoagentid", 0200);
    machine.ObeyFileModes();
    const run_t run = machine.Run();
    machine.SetMode("/etc/nelvoagentid", 0600);

    EXPECT_THAT(run, Prints(IsNewId()));
    EXPECT_NE(kPrinted, run.out);
    EXPECT_EQ(run.out, machine.Read("/etc/nelvoagentid") + "\n");
}

TEST(AgentFile, IsCreatedWhereADanglingLinkPoints)
{
    machine_t machine;
    machine.Link("/etc/nelvoagentid", "/etc/elsewhere");
    const std::string before = machine.State("/etc/nelvoagentid");
    const run_t run = machine.Run();

    EXPECT_THAT(run, Prints(IsNewId()));
    EXPECT_EQ(run.out, machine.Read("/etc/elsewhere") + "\n");
    EXPECT_EQ(before, machine.State("/etc/nelvoagentid"));
}

// The disk holds the name of the file but not one byte of it.
TEST(AgentFile, FailedWriteIsNotNoticed)
{
    machine_t machine;
    machine.FullDisk("/etc");

    EXPECT_THAT(machine.Run(), Prints(IsNewId()));
}

TEST(AgentFile, FailedWriteLeavesTheNextRunWithoutId)
{
    machine_t machine;
    machine.FullDisk("/etc");
    const run_t run =
        machine.Shell("nelvoagentid > /tmp/first && stat -c %s /etc/nelvoagentid && nelvoagentid");
    const std::string second = run.out.substr(2);

    EXPECT_EQ("0\n", run.out.substr(0, 2));
    EXPECT_THAT(machine.Read("/tmp/first"), IsNewId());
    EXPECT_THAT(second, IsNewId());
    EXPECT_NE(machine.Read("/tmp/first"), second);
    EXPECT_EQ("", run.err);
    EXPECT_EQ(0, run.status);
}

// Its text and the stream's memory are there before the file is.
TEST(AgentFile, IsNotLeftEmptyForWantOfMemory)
{
    machine_t machine;

    EXPECT_THAT(machine.RunShortOfMemory(), Prints("38\nabsent\n"));
}

namespace
{

// No id is printed, the run ends with this text, and what stands at the path, stays.
void ExpectFailure(machine_t& machine, const std::string& text, const std::string& path = "/etc/nelvoagentid")
{
    const std::string before = machine.State(path);

    EXPECT_THAT(machine.Run(), FailsWith(text));
    EXPECT_EQ(before, machine.State(path));
}

const char kNotOpened[] = "Failed to open file [/etc/nelvoagentid].\n";

} // namespace

TEST(AgentFile, DirectoryCannotBeReplaced)
{
    machine_t machine;
    machine.Folder("/etc/nelvoagentid");

    ExpectFailure(machine, kNotOpened);
}

TEST(AgentFile, LoopOfLinksCannotBeReplaced)
{
    machine_t machine;
    machine.Link("/etc/nelvoagentid", "nelvoagentid");

    ExpectFailure(machine, kNotOpened);
}

TEST(AgentFile, SocketCannotBeReplaced)
{
    machine_t machine;
    machine.Socket("/etc/nelvoagentid");

    ExpectFailure(machine, kNotOpened);
}

TEST(AgentFile, IsNotCreatedInAMissingFolderBehindALink)
{
    machine_t machine;
    machine.Link("/etc/nelvoagentid", "/nowhere/id");

    ExpectFailure(machine, kNotOpened);
}

TEST(AgentFile, IsNotCreatedInAReadOnlyFolder)
{
    machine_t machine;
    machine.ReadOnlyFolder("/etc");

    ExpectFailure(machine, kNotOpened);
}

TEST(AgentFile, ReadOnlyFileStaysAsItIs)
{
    machine_t machine;
    machine.AgentFile("no id");
    machine.SetMode("/etc/nelvoagentid", 0400);
    machine.ObeyFileModes();

    ExpectFailure(machine, kNotOpened);
}

TEST(AgentFile, FileInThePlaceOfItsFolderStaysAsItIs)
{
    machine_t machine;
    machine.Remove("/etc");
    machine.File("/etc", "a file");

    ExpectFailure(machine, kNotOpened, "/etc");
}

TEST(AgentFile, MissingFolderIsCreated)
{
    machine_t machine;
    machine.Remove("/etc");
    machine.SetUmask(027);
    const run_t run = machine.Run();

    EXPECT_THAT(run, Prints(IsNewId()));
    EXPECT_EQ(run.out, machine.Read("/etc/nelvoagentid") + "\n");
    EXPECT_EQ(0750u, machine.Mode("/etc"));
}

TEST(AgentFile, FolderThatIsADanglingLinkCannotBeCreated)
{
    machine_t machine;
    machine.Remove("/etc");
    machine.Link("/etc", "/nowhere");

    ExpectFailure(machine, "File exists\nFailed to create directory '/etc'\n", "/etc");
}

TEST(AgentFile, FolderThatIsALoopOfLinksCannotBeCreated)
{
    machine_t machine;
    machine.Remove("/etc");
    machine.Link("/etc", "etc");

    ExpectFailure(machine,
                  "Too many levels of symbolic links\nFailed to get file system object info: '/etc'\n",
                  "/etc");
}

TEST(AgentFile, FolderCannotBeCreatedInAReadOnlyRoot)
{
    machine_t machine;
    machine.Remove("/etc");
    machine.SetMode("/", 0555);
    machine.ObeyFileModes();

    ExpectFailure(machine, "Permission denied\nFailed to create directory '/etc'\n", "/etc");
    machine.SetMode("/", 0755);
}
