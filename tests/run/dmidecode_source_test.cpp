#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/run/machine.h"

// The second source, with a script in the place of dmidecode. Where it gives no id, sysfs gives one.

namespace
{

const char kPrinted[] = "{33221100-5544-7766-8899-aabbccddeeff}\n";
const char kSysfsPrinted[] = "{99999999-9999-9999-9999-999999999999}\n";

std::string Printed(machine_t& machine)
{
    machine.Sysfs("99999999-9999-9999-9999-999999999999\n");
    const run_t run = machine.Run();

    EXPECT_EQ("", run.err);
    EXPECT_EQ(0, run.status);
    EXPECT_FALSE(machine.Exists("/etc/nelvoagentid"));
    return run.out;
}

std::string PrintedWith(const std::string& output)
{
    machine_t machine;
    machine.DmidecodePrints(output);
    return Printed(machine);
}

// What comes through the pipe without a line feed at its end; grep itself always adds one.
std::string PrintedWithPipe(const std::string& bytes)
{
    machine_t machine;
    machine.GrepPrints(bytes);
    return Printed(machine);
}

std::string PrintedWithScript(const std::string& script)
{
    machine_t machine;
    machine.Dmidecode(script);
    return Printed(machine);
}

} // namespace

TEST(DmidecodeSource, IdIsPrintedWithItsFirstThreeGroupsReversed)
{
    EXPECT_EQ(kPrinted, PrintedWith("\tUUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n"));
}

TEST(DmidecodeSource, IdIsTheSameInEveryRunAndNeverStored)
{
    machine_t machine;
    machine.DmidecodePrints("\tUUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n");

    EXPECT_THAT(machine.Run(), Prints(kPrinted));
    EXPECT_THAT(machine.Run(), Prints(kPrinted));
    EXPECT_FALSE(machine.Exists("/etc/nelvoagentid"));
}

TEST(DmidecodeSource, AgentFileWithoutIdStaysAsItIs)
{
    machine_t machine;
    machine.AgentFile("no id");
    machine.DmidecodePrints("\tUUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n");

    EXPECT_THAT(machine.Run(), Prints(kPrinted));
    EXPECT_EQ("no id", machine.Read("/etc/nelvoagentid"));
}

TEST(DmidecodeSource, TheWordUuidMayStandAnywhereInEitherCase)
{
    EXPECT_EQ(kPrinted, PrintedWith("the uUiD of it:00112233-4455-6677-8899-aabbccddeeff\n"));
}

TEST(DmidecodeSource, LinesWithoutTheWordAreSkipped)
{
    EXPECT_EQ(kPrinted, PrintedWith("# dmidecode\n\nSystem Information\n\tSerial Number: 1\n"
                                    "\tUUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n\tWake-up Type: Other\n"));
}

TEST(DmidecodeSource, OnlyTheFirstLineCounts)
{
    EXPECT_EQ(kPrinted, PrintedWith("UUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n"
                                    "UUID: 11111111-1111-1111-1111-111111111111\n"));
    EXPECT_EQ(kSysfsPrinted, PrintedWith("Manufacturer: Uuid Makers\n"
                                         "UUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n"));
}

TEST(DmidecodeSource, WhiteSpaceAroundTheValueIsTrimmed)
{
    EXPECT_EQ(kPrinted, PrintedWith("UUID:\t \t00112233-4455-6677-8899-AABBCCDDEEFF \t \n"));
}

TEST(DmidecodeSource, CarriageReturnsAreSkippedWhereverTheyStand)
{
    EXPECT_EQ(kPrinted, PrintedWith("\tUUID: 0011\r2233-4455-6677-8899-AABBCCDDEEFF\r\n"));
}

TEST(DmidecodeSource, ColonBehindTheValueDoesNoHarm)
{
    EXPECT_EQ(kPrinted, PrintedWith("UUID: 00112233-4455-6677-8899-AABBCCDDEEFF:\n"));
}

TEST(DmidecodeSource, OtherColonsSpoilTheLine)
{
    EXPECT_EQ(kSysfsPrinted, PrintedWith("System: UUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n"));
    EXPECT_EQ(kSysfsPrinted, PrintedWith("UUID:: 00112233-4455-6677-8899-AABBCCDDEEFF\n"));
    EXPECT_EQ(kSysfsPrinted, PrintedWith("UUID 00112233-4455-6677-8899-AABBCCDDEEFF\n"));
    EXPECT_EQ(kSysfsPrinted, PrintedWith("UUID:\n"));
}

TEST(DmidecodeSource, ValueOfAnotherLengthIsNoId)
{
    EXPECT_EQ(kSysfsPrinted, PrintedWith("UUID: Not Settable\n"));
    EXPECT_EQ(kSysfsPrinted, PrintedWith("UUID: 00112233-4455-6677-8899-AABBCCDDEEF\n"));
    EXPECT_EQ(kSysfsPrinted, PrintedWith("UUID: 00112233-4455-6677-8899-AABBCCDDEEFFF\n"));
}

TEST(DmidecodeSource, BracesAreNotAccepted)
{
    EXPECT_EQ(kSysfsPrinted, PrintedWith("UUID: {00112233-4455-6677-8899-AABBCCDDEEFF}\n"));
    EXPECT_EQ(kSysfsPrinted, PrintedWith("UUID: 00112233-4455-6677-8899-AABBCCDDEEFF}\n"));
}

TEST(DmidecodeSource, MissingDashIsNoId)
{
    EXPECT_EQ(kSysfsPrinted, PrintedWith("UUID: 001122330-455-6677-8899-AABBCCDDEEFF\n"));
    EXPECT_EQ(kSysfsPrinted, PrintedWith("UUID: 00112233-44550-677-8899-AABBCCDDEEFF\n"));
    EXPECT_EQ(kSysfsPrinted, PrintedWith("UUID: 00112233-4455-66770-899-AABBCCDDEEFF\n"));
    EXPECT_EQ(kSysfsPrinted, PrintedWith("UUID: 00112233-4455-6677-88990-ABBCCDDEEFF\n"));
}

TEST(DmidecodeSource, BadDigitIsNoId)
{
    EXPECT_EQ(kSysfsPrinted, PrintedWith("UUID: 00112233-4455-6677-8899-AABBCCDDEEFg\n"));
}

TEST(DmidecodeSource, AllZeroIdIsNoId)
{
    EXPECT_EQ(kSysfsPrinted, PrintedWith("UUID: 00000000-0000-0000-0000-000000000000\n"));
}

TEST(DmidecodeSource, AllOnesIdIsAnId)
{
    EXPECT_EQ("{ffffffff-ffff-ffff-ffff-ffffffffffff}\n",
              PrintedWith("UUID: FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF\n"));
}

TEST(DmidecodeSource, LastLineWithoutLineFeedDoublesItsLastByte)
{
    EXPECT_EQ(kSysfsPrinted, PrintedWithPipe("\tUUID: 00112233-4455-6677-8899-AABBCCDDEEFF"));
    EXPECT_EQ(kPrinted, PrintedWithPipe("\tUUID: 00112233-4455-6677-8899-AABBCCDDEEF"));
}

TEST(DmidecodeSource, CarriageReturnBeforeTheEndIsNotDoubled)
{
    EXPECT_EQ(kPrinted, PrintedWithPipe("\tUUID: 00112233-4455-6677-8899-AABBCCDDEEFF\r"));
}

TEST(DmidecodeSource, BlankBeforeTheEndIsTrimmedTwice)
{
    EXPECT_EQ(kPrinted, PrintedWithPipe("\tUUID: 00112233-4455-6677-8899-AABBCCDDEEFF "));
}

TEST(DmidecodeSource, EmptyPipeGivesNoId)
{
    EXPECT_EQ(kSysfsPrinted, PrintedWithPipe(""));
    EXPECT_EQ(kSysfsPrinted, PrintedWithPipe("\n"));
}

TEST(DmidecodeSource, ZeroBytesInTheValueAreNoId)
{
    EXPECT_EQ(kSysfsPrinted,
              PrintedWithPipe(std::string("UUID: 00112233-4455-6677-8899-AABBCCDDEE\0\0\n", 43)));
    EXPECT_EQ(kSysfsPrinted, PrintedWithPipe(std::string("UUID: \0\n", 8)));
}

// grep passes no line of it on, and what it says reaches standard error.
TEST(DmidecodeSource, BinaryOutputGivesNoId)
{
    machine_t machine;
    machine.DmidecodePrints(std::string("\0\xFF\n", 3) + "UUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n");
    machine.Sysfs("99999999-9999-9999-9999-999999999999\n");

    EXPECT_THAT(machine.Run(), Ends(kSysfsPrinted, "grep: (standard input): binary file matches\n", 0));
    EXPECT_FALSE(machine.Exists("/etc/nelvoagentid"));
}

TEST(DmidecodeSource, MissingGrepGivesNoId)
{
    machine_t machine;
    machine.DmidecodePrints("UUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n");
    machine.Sysfs("99999999-9999-9999-9999-999999999999\n");
    machine.SetSearchPath("/fake");

    EXPECT_THAT(machine.Run(), Ends(kSysfsPrinted, "sh: 1: grep: not found\n", 0));
    EXPECT_FALSE(machine.Exists("/etc/nelvoagentid"));
}

TEST(DmidecodeSource, SilentProgramGivesNoId) { EXPECT_EQ(kSysfsPrinted, PrintedWithScript("exit 0")); }

TEST(DmidecodeSource, MissingProgramGivesNoId)
{
    machine_t machine;
    EXPECT_EQ(kSysfsPrinted, Printed(machine));
}

TEST(DmidecodeSource, MissingShellGivesNoId)
{
    machine_t machine;
    machine.DmidecodePrints("UUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n");
    machine.NoShell();

    EXPECT_EQ(kSysfsPrinted, Printed(machine));
}

TEST(DmidecodeSource, ExitStatusIsNotLookedAt)
{
    EXPECT_EQ(kPrinted, PrintedWithScript("echo 'UUID: 00112233-4455-6677-8899-AABBCCDDEEFF'; exit 3"));
}

TEST(DmidecodeSource, ErrorsOfTheProgramAreDropped)
{
    EXPECT_EQ(kSysfsPrinted, PrintedWithScript("echo 'UUID: 00112233-4455-6677-8899-AABBCCDDEEFF' >&2"));
}

TEST(DmidecodeSource, SlowProgramIsWaitedFor)
{
    EXPECT_EQ(kPrinted, PrintedWithScript("sleep 0.2; echo 'UUID: 00112233-4455-6677-8899-AABBCCDDEEFF'"));
}

// Its output ends before it does.
TEST(DmidecodeSource, ProgramIsWaitedForBehindItsOutput)
{
    machine_t machine;
    machine.Dmidecode("echo 'UUID: 00112233-4455-6677-8899-AABBCCDDEEFF'; exec >&-\n"
                      "sleep 0.2; touch /tmp/done");

    EXPECT_THAT(machine.Run(), Prints(kPrinted));
    EXPECT_TRUE(machine.Exists("/tmp/done"));
}

TEST(DmidecodeSource, OnlySuccessChangesTheCallersId)
{
    const std::vector<std::pair<std::string, std::string>> answers = {
        {"UUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n", std::string("found ") + kPrinted},
        {"UUID: 00000000-0000-0000-0000-000000000000\n", std::string("not found ") + kSysfsPrinted},
        {"UUID: 00112233-4455-6677-8899-AABBCCDDEEFg\n", std::string("not found ") + kSysfsPrinted},
        {"UUID: 001122330-455-6677-8899-AABBCCDDEEFF\n", std::string("not found ") + kSysfsPrinted},
        {"", std::string("not found ") + kSysfsPrinted},
    };
    for (const auto& [output, answer] : answers)
    {
        machine_t machine;
        machine.DmidecodePrints(output);
        EXPECT_THAT(machine.Ask("dmidecode"), Prints(answer)) << output;
    }
}

TEST(DmidecodeSource, MegabytesOfLinesAfterTheFirstDoNoHarm)
{
    EXPECT_EQ(kPrinted, PrintedWithScript("echo 'UUID: 00112233-4455-6677-8899-AABBCCDDEEFF'\n"
                                          "head -c 8000000 /dev/zero | tr '\\0' '\\n' | sed 's/^/uuid/'"));
}

TEST(DmidecodeSource, MegabytesOfOtherLinesAreSkipped)
{
    EXPECT_EQ(kPrinted, PrintedWithScript("head -c 8000000 /dev/zero | tr '\\0' '\\n'\n"
                                          "echo 'UUID: 00112233-4455-6677-8899-AABBCCDDEEFF'"));
}

TEST(DmidecodeSource, LineOfMegabytesGivesNoId)
{
    EXPECT_EQ(kSysfsPrinted, PrintedWithScript("echo \"UUID: $(head -c 4000000 /dev/zero | tr '\\0' 'a')\""));
}
