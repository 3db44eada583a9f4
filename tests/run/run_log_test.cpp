#include <ctime>
#include <iomanip>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/run/machine.h"

// The whole log of a run, on standard output. Below, "@" stands for the head of a line, the time and the
// thread, and THREAD for the thread's id.

namespace
{

const char kFrame[] = "//////////////////////////////////////////////////////////////////////////\n";
const char kBanner[] =
    "@ agentid| //////////////////////////////////////////////////////////////////////////\n";

const char kAgentFileText[] = "{00112233-4455-6677-8899-aabbccddeeff}";
const char kSysfsText[] = "D0C0B0A0-F0E0-2010-3040-5060708090A1\n";
const char kDmidecodeLine[] = "\tUUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n";

// How the run ends that finds the id of these texts.
const char kEndWithAgentFile[] = "@ agentid| Existed agentId found in agent file\n"
                                 "@ agentid| Agent id: {00112233-4455-6677-8899-aabbccddeeff}\n"
                                 "{00112233-4455-6677-8899-aabbccddeeff}\n";
const char kEndWithDmidecode[] = "@ agentid| Existed agentId found by dmidecode\n"
                                 "@ agentid| Agent id: {33221100-5544-7766-8899-aabbccddeeff}\n"
                                 "{33221100-5544-7766-8899-aabbccddeeff}\n";
const char kEndWithSysfs[] = "@ agentid| Existed agentId found in sysfs\n"
                             "@ agentid| Agent id: {a0b0c0d0-e0f0-1020-3040-5060708090a1}\n"
                             "{a0b0c0d0-e0f0-1020-3040-5060708090a1}\n";

const char kNotInAgentFile[] = "@ agentid|   Existed agentId was not found in agent file\n";
const char kNotByDmidecode[] = "@ agentid|   Existed agentId was not found by dmidecode\n";
const char kNotInSysfs[] = "@ agentid|   Existed agentId was not found in sysfs\n";
const char kNowhere[] = "@ agentid| Existed agentId was not found\n"
                        "@ agentid| Generate new nelvo agent id\n";

const char kOddLength[] =
    "@ agentid| WARN|Failed to parse system UUID: Failed to execute 'dmidecode | grep -i uuid' command.\n";
const char kOddDashes[] = "@ agentid| WARN|Failed to parse system UUID: Incorrect format of UUID string.\n";

// A zone file with one kind of time, 5 hours and 45 minutes ahead of UTC.
constexpr std::time_t kZone = 20700;
const std::string kZoneFile = std::string("TZif") + std::string(35, '\0') + '\1' + std::string(3, '\0') +
                              '\4' + std::string("\0\0\x50\xDC\0\0", 6) + std::string("ABC", 4);

// The log between its frames, after the lines with which each run begins.
std::string Log(const std::string& lines, const std::string& name = "/tool/nelvoagentid")
{
    return kFrame + std::string(kBanner) + "@ agentid| name: " + name +
           "\n@ agentid| Looking for existed agentId\n" + lines + kFrame;
}

std::string EndWithNewId(const machine_t& machine)
{
    const std::string id = machine.Read("/etc/nelvoagentid");
    return "@ agentid| Agent id: " + id + "\n" + id + "\n";
}

// Takes the heads out of a log that was written from a moment on, in a zone that many seconds ahead.
class heads_t
{
public:
    explicit heads_t(std::time_t begin, std::time_t zone = 0) : m_last(begin), m_zone(zone) {}

    std::string TakeOut(const std::string& log)
    {
        std::istringstream lines(log);
        std::string text;
        for (std::string line; std::getline(lines, line);)
            text += TakeOutOne(line) + "\n";
        return text;
    }

private:
    // "[12.11.2026 23:14:05] <139872223348480> agentid| ..."; a line without a head stays as it is.
    std::string TakeOutOne(const std::string& line)
    {
        const std::size_t end = line.find("> ");
        if (line.find("] <") != 20 || line[0] != '[' || end == std::string::npos)
            return line;
        CheckTime(line.substr(1, 19));
        CheckThread(line.substr(23, end - 23));
        const std::string rest = line.substr(end + 2);
        const std::size_t thread = rest.find("thread [" + m_thread + "]");
        return "@ " + (thread == std::string::npos ? rest
                                                   : rest.substr(0, thread) + "thread [THREAD]" +
                                                         rest.substr(thread + 9 + m_thread.size()));
    }

    void CheckTime(const std::string& text)
    {
        std::tm parts = {};
        ::strptime(text.c_str(), "%d.%m.%Y %H:%M:%S", &parts);
        const std::time_t time = ::timegm(&parts) - m_zone;
        std::ostringstream again;
        again << std::put_time(&parts, "%d.%m.%Y %H:%M:%S");
        EXPECT_EQ(again.str(), text);
        EXPECT_LE(m_last, time) << text;
        EXPECT_GE(std::time(nullptr), time) << text;
        m_last = time;
    }

    void CheckThread(const std::string& text)
    {
        if (m_thread.empty())
            m_thread = text;
        EXPECT_EQ(m_thread, text);
        EXPECT_GE(text.size(), 6u);
        EXPECT_EQ(std::string::npos, text.find_first_not_of("0123456789")) << text;
    }

    std::time_t m_last;
    std::time_t m_zone;
    std::string m_thread;
};

run_t RunLogged(machine_t& machine, const std::vector<std::string>& options = {"--log", ""})
{
    heads_t heads(std::time(nullptr));
    run_t run = machine.Run(options);
    run.out = heads.TakeOut(run.out);
    return run;
}

// The log of a good run.
std::string LogOf(machine_t& machine)
{
    const run_t run = RunLogged(machine);
    EXPECT_EQ("", run.err);
    EXPECT_EQ(0, run.status);
    return run.out;
}

std::string LogWithAgentFile(const std::string& text)
{
    machine_t machine;
    machine.AgentFile(text);
    machine.DmidecodePrints(kDmidecodeLine);
    return LogOf(machine);
}

std::string LogWithDmidecode(const std::string& output)
{
    machine_t machine;
    machine.DmidecodePrints(output);
    machine.Sysfs(kSysfsText);
    return LogOf(machine);
}

// On a machine whose agent file cannot be read, and with dmidecode's id.
std::string LogWithFailure(machine_t& machine)
{
    machine.DmidecodePrints(kDmidecodeLine);
    return LogOf(machine);
}

} // namespace

// ---- Each source ----

TEST(RunLog, IdInTheAgentFile) { EXPECT_EQ(Log(kEndWithAgentFile), LogWithAgentFile(kAgentFileText)); }

TEST(RunLog, IdFromDmidecode)
{
    EXPECT_EQ(Log(std::string(kNotInAgentFile) + kEndWithDmidecode), LogWithDmidecode(kDmidecodeLine));
}

TEST(RunLog, IdInSysfs)
{
    EXPECT_EQ(Log(std::string(kNotInAgentFile) + kOddLength + kNotByDmidecode + kEndWithSysfs),
              LogWithDmidecode(""));
}

TEST(RunLog, NoIdAnywhere)
{
    machine_t machine;
    const std::string log = LogOf(machine);

    EXPECT_THAT(machine.Read("/etc/nelvoagentid") + "\n", IsNewId());
    EXPECT_EQ(Log(std::string(kNotInAgentFile) + kOddLength + kNotByDmidecode + kNotInSysfs + kNowhere +
                  EndWithNewId(machine)),
              log);
}

TEST(RunLog, NextRunFindsTheNewId)
{
    machine_t machine;
    LogOf(machine);

    EXPECT_EQ(Log("@ agentid| Existed agentId found in agent file\n" + EndWithNewId(machine)),
              LogOf(machine));
}

// ---- The head of a line ----

TEST(RunLog, TimeIsThatOfTheMachinesZone)
{
    machine_t machine;
    machine.AgentFile(kAgentFileText);
    machine.File("/etc/localtime", kZoneFile);
    heads_t heads(std::time(nullptr), kZone);

    EXPECT_EQ(Log(kEndWithAgentFile), heads.TakeOut(machine.Run({"--log", ""}).out));
}

// What cuts the numbers of threads to 32 bits behaves as it does because of that.
TEST(RunLog, NumberOfTheThreadDoesNotFit32Bits)
{
    machine_t machine;
    machine.AgentFile(kAgentFileText);
    const std::string log = machine.Run({"--log", ""}).out;

    EXPECT_LT(0xFFFFFFFFu, std::stoull(log.substr(log.find("] <") + 3)));
}

// ---- The agent file ----

TEST(RunLog, AgentFileWithoutIdHasNoLineOfItsOwn)
{
    for (const char* const text : {"", " \n", "no id", "{00112233-4455-6677-8899-aabbccddeefg}",
                                   "{00000000-0000-0000-0000-000000000000}"})
    {
        EXPECT_EQ(Log(std::string(kNotInAgentFile) + kEndWithDmidecode), LogWithAgentFile(text)) << text;
    }
}

TEST(RunLog, DirectoryInThePlaceOfTheAgentFileHasNoLineOfItsOwn)
{
    machine_t machine;
    machine.Folder("/etc/nelvoagentid");

    EXPECT_EQ(Log(std::string(kNotInAgentFile) + kEndWithDmidecode), LogWithFailure(machine));
}

TEST(RunLog, DanglingLinkHasNoLineOfItsOwn)
{
    machine_t machine;
    machine.Link("/etc/nelvoagentid", "/etc/nothing");

    EXPECT_EQ(Log(std::string(kNotInAgentFile) + kEndWithDmidecode), LogWithFailure(machine));
}

namespace
{

// A failed look-up of the agent file stands at the margin, inside the scope though it is.
std::string LogOfFailure(const std::string& reason, const std::string& message)
{
    return Log("@ agentid| ERR |Failed to look uuid in file: /etc/nelvoagentid \n"
               "@ agentid| >>  |" +
               reason + "\n@ agentid| >>  |" + message +
               "\n@ agentid| >>  |An exception was thrown from thread [THREAD].\n" + kNotInAgentFile +
               kEndWithDmidecode);
}

const char kNoInfo[] = "Failed to get file system object info: '/etc/nelvoagentid'";
const char kNotOpened[] = "Failed to open file [/etc/nelvoagentid].";

} // namespace

TEST(RunLog, FailedLookUpEndsItsMessageInABlank)
{
    machine_t machine;
    machine.Link("/etc/nelvoagentid", "nelvoagentid");

    EXPECT_EQ(Log("@ agentid| ERR |Failed to look uuid in file: /etc/nelvoagentid \n"
                  "@ agentid| >>  |Too many levels of symbolic links\n"
                  "@ agentid| >>  |Failed to get file system object info: '/etc/nelvoagentid'\n"
                  "@ agentid| >>  |An exception was thrown from thread [THREAD].\n"
                  "@ agentid|   Existed agentId was not found in agent file\n"
                  "@ agentid| Existed agentId found by dmidecode\n"
                  "@ agentid| Agent id: {33221100-5544-7766-8899-aabbccddeeff}\n"
                  "{33221100-5544-7766-8899-aabbccddeeff}\n"),
              LogWithFailure(machine));
}

TEST(RunLog, FileInThePlaceOfTheAgentFilesFolder)
{
    machine_t machine;
    machine.Remove("/etc");
    machine.File("/etc", "a file");

    EXPECT_EQ(LogOfFailure("Not a directory", kNoInfo), LogWithFailure(machine));
}

TEST(RunLog, UnreachableAgentFile)
{
    machine_t machine;
    machine.SetMode("/etc", 0);
    machine.ObeyFileModes();
    const std::string log = LogWithFailure(machine);
    machine.SetMode("/etc", 0755);

    EXPECT_EQ(LogOfFailure("Permission denied", kNoInfo), log);
}

TEST(RunLog, UnreadableAgentFile)
{
    machine_t machine;
    machine.AgentFile(kAgentFileText);
    machine.SetMode("/etc/nelvoagentid", 0);
    machine.ObeyFileModes();

    EXPECT_EQ(LogOfFailure("Permission denied", kNotOpened), LogWithFailure(machine));
}

TEST(RunLog, SocketInThePlaceOfTheAgentFile)
{
    machine_t machine;
    machine.Socket("/etc/nelvoagentid");

    EXPECT_EQ(LogOfFailure("No such device or address", kNotOpened), LogWithFailure(machine));
}

// ---- dmidecode ----

namespace
{

// Sysfs gives the id, after what dmidecode's source has to say.
std::string LogWithoutDmidecode(const std::string& warning)
{
    return Log(kNotInAgentFile + warning + kNotByDmidecode + kEndWithSysfs);
}

} // namespace

TEST(RunLog, ValueOfAnotherLengthIsAWarning)
{
    for (const char* const output :
         {"UUID: Not Settable\n", "UUID: Not Present\n", "UUID:\n", "no such line\n",
          "UUID: 00112233-4455-6677-8899-AABBCCDDEEF\n", "UUID: 00112233-4455-6677-8899-AABBCCDDEEFFF\n",
          "UUID: {00112233-4455-6677-8899-AABBCCDDEEFF}\n", "UUID: 00112233445566778899AABBCCDDEEFF\n",
          "A: UUID: 00112233-4455-6677-8899-AABBCCDDEEFF\n"})
    {
        EXPECT_EQ(LogWithoutDmidecode(kOddLength), LogWithDmidecode(output)) << output;
    }
}

TEST(RunLog, MisplacedDashIsAWarningOfItsOwn)
{
    for (const char* const output :
         {"UUID: 001122330-455-6677-8899-AABBCCDDEEFF\n", "UUID: 00112233-44550-677-8899-AABBCCDDEEFF\n",
          "UUID: 00112233-4455-66770-899-AABBCCDDEEFF\n", "UUID: 00112233-4455-6677-88990-ABBCCDDEEFF\n",
          "UUID: To Be Filled By The Maker Of It All.\n"})
    {
        EXPECT_EQ(LogWithoutDmidecode(kOddDashes), LogWithDmidecode(output)) << output;
    }
}

TEST(RunLog, BadDigitIsNoWarning)
{
    EXPECT_EQ(LogWithoutDmidecode(""), LogWithDmidecode("UUID: 00112233-4455-6677-8899-AABBCCDDEEFg\n"));
}

TEST(RunLog, FifthDashIsNoWarning)
{
    EXPECT_EQ(LogWithoutDmidecode(""), LogWithDmidecode("UUID: 00112233-4455-6677-8899-AABBCCDDEEF-\n"));
}

TEST(RunLog, AllZeroIdIsNoWarning)
{
    EXPECT_EQ(LogWithoutDmidecode(""), LogWithDmidecode("UUID: 00000000-0000-0000-0000-000000000000\n"));
}

TEST(RunLog, MissingDmidecodeIsAWarning)
{
    machine_t machine;
    machine.Sysfs(kSysfsText);

    EXPECT_EQ(LogWithoutDmidecode(kOddLength), LogOf(machine));
}

TEST(RunLog, MissingGrepIsAWarning)
{
    machine_t machine;
    machine.DmidecodePrints(kDmidecodeLine);
    machine.Sysfs(kSysfsText);
    machine.SetSearchPath("/fake");

    EXPECT_THAT(RunLogged(machine), Ends(LogWithoutDmidecode(kOddLength), "sh: 1: grep: not found\n", 0));
}

// There is no pipe at all then.
TEST(RunLog, MissingShellIsNoWarning)
{
    machine_t machine;
    machine.DmidecodePrints(kDmidecodeLine);
    machine.Sysfs(kSysfsText);
    machine.NoShell();

    EXPECT_EQ(LogWithoutDmidecode(""), LogOf(machine));
}

// ---- Sysfs ----

namespace
{

// Neither dmidecode nor sysfs gives an id, and this is what the latter's source has to say.
void ExpectNewId(machine_t& machine, const std::string& failure)
{
    const std::string log = LogOf(machine);

    EXPECT_EQ(Log(std::string(kNotInAgentFile) + kOddLength + kNotByDmidecode + failure + kNotInSysfs +
                  kNowhere + EndWithNewId(machine)),
              log);
}

std::string SysfsFailure(const std::string& reason, const std::string& message)
{
    return "@ agentid| ERR |Failed to look uuid in file: /sys/class/dmi/id/product_uuid \n"
           "@ agentid| >>  |" +
           reason + "\n@ agentid| >>  |" + message +
           "\n@ agentid| >>  |An exception was thrown from thread [THREAD].\n";
}

const char kNoSysfsInfo[] = "Failed to get file system object info: '/sys/class/dmi/id/product_uuid'";
const char kSysfsNotOpened[] = "Failed to open file [/sys/class/dmi/id/product_uuid].";

} // namespace

TEST(RunLog, SysfsWithoutIdHasNoLineOfItsOwn)
{
    for (const char* const text : {"", "Not Settable\n", "00000000-0000-0000-0000-000000000000\n"})
    {
        machine_t machine;
        machine.Sysfs(text);
        ExpectNewId(machine, "");
    }
}

TEST(RunLog, LoopOfLinksInSysfs)
{
    machine_t machine;
    machine.Folder("/sys/class/dmi/id");
    machine.Link("/sys/class/dmi/id/product_uuid", "product_uuid");

    ExpectNewId(machine, SysfsFailure("Too many levels of symbolic links", kNoSysfsInfo));
}

TEST(RunLog, FileInThePlaceOfAFolderOfSysfs)
{
    machine_t machine;
    machine.File("/sys/class", "a file");

    ExpectNewId(machine, SysfsFailure("Not a directory", kNoSysfsInfo));
}

TEST(RunLog, UnreadableFileInSysfs)
{
    machine_t machine;
    machine.Sysfs(kSysfsText);
    machine.SetMode("/sys/class/dmi/id/product_uuid", 0);
    machine.ObeyFileModes();

    ExpectNewId(machine, SysfsFailure("Permission denied", kSysfsNotOpened));
}

// ---- Runs that fail: their failure is not logged ----

TEST(RunLog, EndsWhereTheNewIdCannotBeStored)
{
    machine_t machine;
    machine.Folder("/etc/nelvoagentid");

    EXPECT_THAT(RunLogged(machine), Ends(Log(std::string(kNotInAgentFile) + kOddLength + kNotByDmidecode +
                                             kNotInSysfs + kNowhere),
                                         "Failed to open file [/etc/nelvoagentid].\n", 1));
}

TEST(RunLog, TellsOfBothFilesBeforeARunThatFails)
{
    machine_t machine;
    machine.Link("/etc/nelvoagentid", "nelvoagentid");
    machine.File("/sys/class", "a file");

    EXPECT_THAT(RunLogged(machine),
                Ends(Log("@ agentid| ERR |Failed to look uuid in file: /etc/nelvoagentid \n"
                         "@ agentid| >>  |Too many levels of symbolic links\n"
                         "@ agentid| >>  |Failed to get file system object info: '/etc/nelvoagentid'\n"
                         "@ agentid| >>  |An exception was thrown from thread [THREAD].\n" +
                         std::string(kNotInAgentFile) + kOddLength + kNotByDmidecode +
                         SysfsFailure("Not a directory", kNoSysfsInfo) + kNotInSysfs + kNowhere),
                     "Failed to open file [/etc/nelvoagentid].\n", 1));
}

TEST(RunLog, EndsWhereTheFolderCannotBeCreated)
{
    machine_t machine;
    machine.Remove("/etc");
    machine.Link("/etc", "/nowhere");

    EXPECT_THAT(RunLogged(machine), Ends(Log(std::string(kNotInAgentFile) + kOddLength + kNotByDmidecode +
                                             kNotInSysfs + kNowhere),
                                         "File exists\nFailed to create directory '/etc'\n", 1));
}

TEST(RunLog, IsNotStartedForOthersThanRoot)
{
    machine_t machine;
    machine.StartAsNobody();

    EXPECT_THAT(machine.Run({"--log", ""}), FailsWith("Permission denied\n"));
}

TEST(RunLog, IsNotStartedForABadOption)
{
    machine_t machine;

    EXPECT_THAT(machine.Run({"--log", "", "--help"}),
                FailsWith("unrecognised option '--help'\nFailed to initialized\n"));
}

// ---- What the log does not show ----

namespace
{

// The lines of a recorded run between the frames.
std::string Recorded(const std::string& lines)
{
    return kFrame +
           std::string("agentid severity 1 indent 0: "
                       "//////////////////////////////////////////////////////////////////////////\n"
                       "agentid severity 1 indent 0: name: /tool/nelvoagentid\n"
                       "agentid severity 1 indent 0: Looking for existed agentId\n") +
           lines + kFrame;
}

} // namespace

TEST(RunLog, SeverityOfEachLineOfARunThatMakesAnId)
{
    machine_t machine;
    const run_t run = machine.RunRecorded();
    const std::string id = machine.Read("/etc/nelvoagentid");

    EXPECT_THAT(run,
                Prints(Recorded("agentid severity 2 indent 1: Existed agentId was not found in agent file\n"
                                "agentid severity 3 indent 0: Failed to parse system UUID: "
                                "Failed to execute 'dmidecode | grep -i uuid' command.\n"
                                "agentid severity 2 indent 1: Existed agentId was not found by dmidecode\n"
                                "agentid severity 2 indent 1: Existed agentId was not found in sysfs\n"
                                "agentid severity 1 indent 0: Existed agentId was not found\n"
                                "agentid severity 2 indent 0: Generate new nelvo agent id\n"
                                "agentid severity 2 indent 0: Agent id: " +
                                id + "\n" + id + "\n")));
}

TEST(RunLog, SeverityOfEachLineOfARunThatFindsAnId)
{
    machine_t machine;
    machine.Sysfs(kSysfsText);
    EXPECT_THAT(
        machine.RunRecorded(),
        Prints(Recorded("agentid severity 2 indent 1: Existed agentId was not found in agent file\n"
                        "agentid severity 3 indent 0: Failed to parse system UUID: "
                        "Failed to execute 'dmidecode | grep -i uuid' command.\n"
                        "agentid severity 2 indent 1: Existed agentId was not found by dmidecode\n"
                        "agentid severity 1 indent 0: Existed agentId found in sysfs\n"
                        "agentid severity 2 indent 0: Agent id: {a0b0c0d0-e0f0-1020-3040-5060708090a1}\n"
                        "{a0b0c0d0-e0f0-1020-3040-5060708090a1}\n")));
    machine.DmidecodePrints(kDmidecodeLine);
    EXPECT_THAT(
        machine.RunRecorded(),
        Prints(Recorded("agentid severity 2 indent 1: Existed agentId was not found in agent file\n"
                        "agentid severity 1 indent 0: Existed agentId found by dmidecode\n"
                        "agentid severity 2 indent 0: Agent id: {33221100-5544-7766-8899-aabbccddeeff}\n"
                        "{33221100-5544-7766-8899-aabbccddeeff}\n")));
    machine.AgentFile(kAgentFileText);
    EXPECT_THAT(
        machine.RunRecorded(),
        Prints(Recorded("agentid severity 1 indent 0: Existed agentId found in agent file\n"
                        "agentid severity 2 indent 0: Agent id: {00112233-4455-6677-8899-aabbccddeeff}\n"
                        "{00112233-4455-6677-8899-aabbccddeeff}\n")));
}

TEST(RunLog, SeverityOfOtherFailures)
{
    machine_t machine;
    machine.Link("/etc/nelvoagentid", "nelvoagentid");
    machine.DmidecodePrints("UUID: 001122330-455-6677-8899-AABBCCDDEEFF\n");
    machine.File("/sys/class", "a file");
    const std::string log = machine.RunRecorded().out;

    for (const char* const line :
         {"agentid severity 4 indent 0: Failed to look uuid in file: /etc/nelvoagentid \n",
          "agentid severity 3 indent 0: Failed to parse system UUID: Incorrect format of UUID string.\n",
          "agentid severity 4 indent 0: Failed to look uuid in file: /sys/class/dmi/id/product_uuid \n"})
    {
        EXPECT_THAT(log, testing::HasSubstr(line));
    }
}

TEST(RunLog, FailureOfARunHasItsTypeAndNoTrace)
{
    machine_t denied;
    denied.StartAsNobody();
    EXPECT_THAT(denied.RunRecorded(), FailsWith("runtime_exc_t 0: Permission denied\n"));

    machine_t machine;
    EXPECT_THAT(machine.RunRecorded({"--help"}),
                FailsWith("runtime_exc_t 0: unrecognised option '--help'\nFailed to initialized\n"));
    machine.Folder("/etc/nelvoagentid");
    EXPECT_EQ("runtime_exc_t 0: Failed to open file [/etc/nelvoagentid].\n", machine.RunRecorded().err);
    machine.Remove("/etc");
    machine.Link("/etc", "/nowhere");
    EXPECT_EQ("errno_exc_t 17: File exists\nFailed to create directory '/etc'\n", machine.RunRecorded().err);
}

// ---- How the run is started ----

TEST(RunLog, EmptyNameStandsInAnyOfItsForms)
{
    for (const char* const name : {"--log", "--lo", "--l", "-l"})
    {
        machine_t machine;
        machine.AgentFile(kAgentFileText);

        EXPECT_THAT(RunLogged(machine, {name, ""}), Prints(Log(kEndWithAgentFile))) << name;
    }
}

TEST(RunLog, TellsTheNameOfTheProgramAsItStands)
{
    for (const char* const name : {"", "nelvoagentid", "%1 %", "/a/long/way/to it"})
    {
        machine_t machine;
        machine.AgentFile(kAgentFileText);
        machine.StartAs(name);

        EXPECT_EQ(Log(kEndWithAgentFile, name), LogOf(machine));
    }
}

TEST(RunLog, NameOfTwoLinesHasTwoLines)
{
    machine_t machine;
    machine.AgentFile(kAgentFileText);
    machine.StartAs("one\ntwo");

    EXPECT_EQ(Log(kEndWithAgentFile, "one\n@ agentid| two"), LogOf(machine));
}
