// The run log's file: where it stands, what is in it, and what becomes of it when it cannot be written.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/run/machine.h"
#include "tests/support/gz.h"
#include "tests/support/lines_receiver.h"

using testing::ElementsAre;

namespace
{

constexpr std::size_t kLimit = 15728639;

const char kId[] = "{00112233-4455-6677-8899-aabbccddeeff}";
const char kPrinted[] = "{00112233-4455-6677-8899-aabbccddeeff}\n";

// What a run with an agent file logs, without the heads of the lines.
const char kLines[] = "agentid| //////////////////////////////////////////////////////////////////////////\n"
                      "agentid| name: /tool/nelvoagentid\n"
                      "agentid| Looking for existed agentId\n"
                      "agentid| Existed agentId found in agent file\n"
                      "agentid| Agent id: {00112233-4455-6677-8899-aabbccddeeff}\n";

const char kElevenArchives[] = "x.1.log.gz\nx.10.log.gz\nx.2.log.gz\nx.3.log.gz\nx.4.log.gz\nx.5.log.gz\n"
                               "x.6.log.gz\nx.7.log.gz\nx.8.log.gz\nx.9.log.gz\nx.log\nx.log.gz\n";

// A machine with an agent file, so that each run finds the same id.
class RunLogFile : public ::testing::Test
{
protected:
    RunLogFile() { m_machine.AgentFile(kId); }

    // A run that prints its id, and nothing else.
    void Run(const std::vector<std::string>& options)
    {
        const run_t run = m_machine.Run(options);
        EXPECT_EQ(kPrinted, run.out);
        EXPECT_EQ("", run.err);
        EXPECT_EQ(0, run.status);
    }

    // A run with the log that prints why it has none, and goes on.
    void RunWithoutLog(const std::string& log, const std::string& failure)
    {
        const run_t run = m_machine.Run({"--log", log});
        EXPECT_EQ("Failed to initialize log [" + log + "].\n" + failure + kPrinted, run.out);
        EXPECT_EQ("", run.err);
        EXPECT_EQ(0, run.status);
    }

    std::string Shell(const std::string& script)
    {
        const run_t run = m_machine.Shell(script);
        EXPECT_EQ("", run.err) << script;
        EXPECT_EQ(0, run.status) << script;
        return run.out;
    }

    void RunWithBigLog(int number)
    {
        m_machine.HugeFile("/work/x.log", "log " + std::to_string(number) + "\n", kLimit + 1);
        Run({"--log", "x.log"});
    }

    std::string Log(const std::string& path) const { return WithoutHeads(m_machine.Read(path)); }
    std::string Unpacked(const std::string& path) { return Shell("gzip -dc < " + path); }

    machine_t m_machine;
};

} // namespace

TEST_F(RunLogFile, StandsInTheWorkingFolderUnlessItIsNamed)
{
    Run({});
    EXPECT_EQ(kLines, Log("/work/nelvoagentid.log"));
    EXPECT_EQ(0644u, m_machine.Mode("/work/nelvoagentid.log"));
    EXPECT_THAT(m_machine.NewPaths(), ElementsAre("/work/nelvoagentid.log"));
}

TEST_F(RunLogFile, RelativePathStartsAtTheWorkingFolder)
{
    Run({"--log", "x/y/z.log"});
    EXPECT_EQ(kLines, Log("/work/x/y/z.log"));
    EXPECT_EQ(0755u, m_machine.Mode("/work/x/y"));
    EXPECT_THAT(m_machine.NewPaths(), ElementsAre("/work/x", "/work/x/y", "/work/x/y/z.log"));
}

TEST_F(RunLogFile, ModeIsTheGroupsTooAsFarAsTheUmaskLetsIt)
{
    m_machine.SetUmask(0);
    Run({"--log", "/tmp/x.log"});
    EXPECT_EQ(0664u, m_machine.Mode("/tmp/x.log"));
}

TEST_F(RunLogFile, GoesOnBehindTheOldOne)
{
    m_machine.File("/tmp/x.log", "not a line of ours");
    Run({"--log", "/tmp/x.log"});
    const std::string first = m_machine.Read("/tmp/x.log");
    EXPECT_EQ("not a line of ours", first.substr(0, 18));
    EXPECT_EQ(kLines, WithoutHeads(first.substr(18)));

    Run({"--log", "/tmp/x.log"});
    const std::string second = m_machine.Read("/tmp/x.log");
    EXPECT_EQ(first, second.substr(0, first.size()));
    EXPECT_EQ(kLines, WithoutHeads(second.substr(first.size())));
}

TEST_F(RunLogFile, TellsTheWholeSearch)
{
    m_machine.Remove("/etc/nelvoagentid");
    m_machine.Folder("/sys/class/dmi/id/product_uuid");
    m_machine.DmidecodePrints("\tUUID: Not Settable\n");
    const std::string id = m_machine.Run({"--log", "x.log"}).out;

    EXPECT_EQ(
        "agentid| //////////////////////////////////////////////////////////////////////////\n"
        "agentid| name: /tool/nelvoagentid\n"
        "agentid| Looking for existed agentId\n"
        "agentid|   Existed agentId was not found in agent file\n"
        "agentid| WARN|Failed to parse system UUID: Failed to execute 'dmidecode | grep -i uuid' command.\n"
        "agentid|   Existed agentId was not found by dmidecode\n"
        "agentid|   Existed agentId was not found in sysfs\n"
        "agentid| Existed agentId was not found\n"
        "agentid| Generate new nelvo agent id\n"
        "agentid| Agent id: " +
            id,
        Log("/work/x.log"));
}

TEST_F(RunLogFile, IsLockedAsLongAsTheRunLasts)
{
    m_machine.Remove("/etc/nelvoagentid");
    m_machine.Sysfs("00112233-4455-6677-8899-aabbccddeeff\n");
    m_machine.Dmidecode("flock -n /work/x.log true && echo free > /work/state || echo locked > /work/state");
    m_machine.Run({"--log", "x.log"});
    EXPECT_EQ("locked\n", m_machine.Read("/work/state"));
    EXPECT_EQ("free\n", Shell("flock -n /work/x.log echo free"));
}

// The first one's dmidecode is the second one.
TEST_F(RunLogFile, TwoRunsAtOnceWriteALogEach)
{
    m_machine.Remove("/etc/nelvoagentid");
    m_machine.Sysfs("00112233-4455-6677-8899-aabbccddeeff\n");
    m_machine.Dmidecode("[ -n \"$INNER\" ] || INNER=1 nelvoagentid --log /work/x.log > /work/inner.out");
    const run_t run = m_machine.Run({"--log", "/work/x.log"});

    EXPECT_EQ("{33221100-5544-7766-8899-aabbccddeeff}\n", run.out);
    EXPECT_EQ(run.out, m_machine.Read("/work/inner.out"));
    const std::string search =
        "agentid| Looking for existed agentId\n"
        "agentid|   Existed agentId was not found in agent file\n"
        "agentid| WARN|Failed to parse system UUID: Failed to execute 'dmidecode | grep -i uuid' command.\n"
        "agentid|   Existed agentId was not found by dmidecode\n"
        "agentid| Existed agentId found in sysfs\n"
        "agentid| Agent id: {33221100-5544-7766-8899-aabbccddeeff}\n";
    const std::string frame = "agentid| " + std::string(74, '/') + "\n";
    EXPECT_EQ(frame + "agentid| name: /tool/nelvoagentid\n" + search, Log("/work/x.log"));
    EXPECT_EQ(frame + "agentid| name: nelvoagentid\n" + search, Log("/work/x.1.log"));
}

// What dmidecode leaves running has the log open too, but not locked.
TEST_F(RunLogFile, IsFreeAfterTheRunWhateverIsLeftRunning)
{
    m_machine.Remove("/etc/nelvoagentid");
    m_machine.Sysfs("00112233-4455-6677-8899-aabbccddeeff\n");
    m_machine.File("/work/running", "");
    m_machine.Dmidecode("(while [ -e /work/running ]; do sleep 0.1; done) > /dev/null 2>&1 &");
    m_machine.Run({"--log", "x.log"});
    m_machine.Run({"--log", "x.log"});
    m_machine.Remove("/work/running");
    EXPECT_THAT(m_machine.NewPaths(), ElementsAre("/work/x.log"));
}

TEST_F(RunLogFile, LogBelowTheLimitIsNotArchived)
{
    const std::string old = Noise(kLimit);
    m_machine.File("/work/x.log", old);
    Run({"--log", "x.log"});
    const std::string log = m_machine.Read("/work/x.log");
    EXPECT_TRUE(old == log.substr(0, old.size()));
    EXPECT_EQ(kLines, WithoutHeads(log.substr(old.size())));
    EXPECT_FALSE(m_machine.Exists("/work/x.log.gz"));
}

TEST_F(RunLogFile, LogBeyondTheLimitIsArchivedBeforeTheFirstLine)
{
    const std::string old = Noise(kLimit + 1);
    m_machine.File("/work/x.log", old);
    Run({"--log", "x.log"});
    EXPECT_EQ(kLines, Log("/work/x.log"));
    EXPECT_TRUE(old == Unpacked("/work/x.log.gz"));
}

TEST_F(RunLogFile, ElevenArchivesAreKept)
{
    for (int i = 1; i <= 11; ++i)
        RunWithBigLog(i);
    EXPECT_EQ(kElevenArchives, Shell("LC_ALL=C ls"));
    EXPECT_EQ("log 11\n", Shell("gzip -dc < x.log.gz | sed 1q"));
    EXPECT_EQ("log 10\n", Shell("gzip -dc < x.1.log.gz | sed 1q"));
    EXPECT_EQ("log 1\n", Shell("gzip -dc < x.10.log.gz | sed 1q"));

    RunWithBigLog(12);
    EXPECT_EQ(kElevenArchives, Shell("LC_ALL=C ls"));
    EXPECT_EQ("log 12\n", Shell("gzip -dc < x.log.gz | sed 1q"));
    EXPECT_EQ("log 2\n", Shell("gzip -dc < x.10.log.gz | sed 1q"));
}

TEST_F(RunLogFile, PathThatCannotBeWrittenEndsInTheBackupFolder)
{
    m_machine.Folder("/var/log");
    m_machine.ReadOnlyFolder("/var/log");
    Run({"--log", "/var/log/x.log"});
    EXPECT_EQ(kLines, Log("/tmp/NelvoBackup/x.log"));

    Run({"--log", "/etc/nelvoagentid/y.log"});
    EXPECT_EQ(kLines, Log("/tmp/NelvoBackup/y.log"));

    Run({"--log", "/work"});
    EXPECT_EQ(kLines, Log("/tmp/NelvoBackup/work"));
    EXPECT_EQ(0755u, m_machine.Mode("/tmp/NelvoBackup"));
}

TEST_F(RunLogFile, LockedBackupIsNumberedToo)
{
    m_machine.Folder("/var/log");
    m_machine.ReadOnlyFolder("/var/log");
    m_machine.File("/tmp/NelvoBackup/x.log", "");
    EXPECT_EQ(kPrinted, Shell("flock /tmp/NelvoBackup/x.log nelvoagentid --log /var/log/x.log"));
    EXPECT_EQ("", m_machine.Read("/tmp/NelvoBackup/x.log"));
    EXPECT_TRUE(m_machine.Exists("/tmp/NelvoBackup/x.1.log"));
}

TEST_F(RunLogFile, BackupThatCannotBeWrittenLeavesTheRunWithout)
{
    m_machine.File("/tmp/NelvoBackup", "");
    RunWithoutLog("/etc/nelvoagentid/x.log",
                  "Not a directory\nPOSIX: Failed to create or open file [/tmp/NelvoBackup/x.log].\n");
    EXPECT_THAT(m_machine.NewPaths(), ElementsAre());
}

TEST_F(RunLogFile, ReadOnlyTemporaryFolderLeavesTheRunWithout)
{
    m_machine.ReadOnlyFolder("/tmp");
    RunWithoutLog("/etc/nelvoagentid/x.log",
                  "Read-only file system\nFailed to create directory '/tmp/NelvoBackup'\n");
}

TEST_F(RunLogFile, FolderIsNoLog)
{
    RunWithoutLog("/tmp/", "Is a directory\nPOSIX: Failed to create or open file [/tmp/NelvoBackup/.].\n");
    RunWithoutLog("/", "Is a directory\nPOSIX: Failed to create or open file [/tmp/NelvoBackup//].\n");
}

TEST_F(RunLogFile, FifoIsNoLog)
{
    Shell("mkfifo /work/x.log");
    RunWithoutLog("/work/x.log", "Illegal seek\n"
                                 "POSIX: Seek operation has failed. File: [/work/x.log]. "
                                 "Distance to move: [0]. Move method: [SEEK_END].\n");
}

TEST_F(RunLogFile, LinksAreFollowedAsFarAsTheyLead)
{
    m_machine.Link("/work/dangling.log", "new.log");
    m_machine.Link("/work/circle.log", "circle.log");
    Run({"--log", "dangling.log"});
    EXPECT_EQ(kLines, Log("/work/new.log"));
    Run({"--log", "circle.log"});
    EXPECT_EQ(kLines, Log("/tmp/NelvoBackup/circle.log"));
}

TEST_F(RunLogFile, NamesMayHoldAnyByte)
{
    for (const std::string name : {"a b", "a\nb.log", "\xff\xfe.log", "%1", "--log", " "})
    {
        Run({"--log", "/work/" + name});
        EXPECT_EQ(kLines, Log("/work/" + name));
    }
    const std::string longest(255, 'n');
    Run({"--log", "/work/" + longest});
    EXPECT_EQ(kLines, Log("/work/" + longest));
    Run({"--log", longest + "n/x.log"});
    EXPECT_EQ(kLines, Log("/tmp/NelvoBackup/x.log"));
}

TEST_F(RunLogFile, NameThatIsTooLongIsNoLog)
{
    const std::string name(256, 'n');
    RunWithoutLog(name, "File name too long\nPOSIX: Failed to create or open file [/tmp/NelvoBackup/" + name +
                            "].\n");
}

TEST_F(RunLogFile, MayStandOnStandardInputsDescriptor)
{
    m_machine.StandardInput(machine_t::stream_t::kClosed);
    Run({"--log", "x.log"});
    Run({"--log", "x.log"});
    EXPECT_EQ(std::string(kLines) + kLines, Log("/work/x.log"));
    EXPECT_THAT(m_machine.NewPaths(), ElementsAre("/work/x.log"));
}

TEST_F(RunLogFile, ReadOnlyFolderOfABigLogLosesNothing)
{
    const std::string old = Noise(kLimit + 1);
    m_machine.File("/var/log/x.log", old);
    m_machine.SetMode("/var/log", 0555);
    m_machine.ObeyFileModes();
    RunWithoutLog("/var/log/x.log", "Permission denied\n"
                                    "Failed to open GZ archive [/var/log/x.log.gz].\n"
                                    "Unable to validate log size limit. Log path: [/var/log/x.log].\n");
    EXPECT_TRUE(old == m_machine.Read("/var/log/x.log"));
    m_machine.SetMode("/var/log", 0755);
}

TEST_F(RunLogFile, FullDiskLosesTheLinesAlone)
{
    m_machine.Folder("/full");
    m_machine.FullDisk("/full");
    EXPECT_EQ(std::string(kPrinted) + "0\n", Shell("nelvoagentid --log /full/x.log; stat -c %s /full/x.log"));
}

// The archive finds no room while the log is copied.
TEST_F(RunLogFile, DiskTooSmallForTheArchiveLosesNothing)
{
    m_machine.File("/work/old", Noise(kLimit + 1));
    m_machine.Folder("/disk");
    EXPECT_EQ("Failed to initialize log [/disk/x.log].\n"
              "No space left on device\n"
              "Cannot add data to the GZ archive [/disk/x.log.gz].\n"
              "Cannot compress log file. Log: [/disk/x.log].\n"
              "Unable to validate log size limit. Log path: [/disk/x.log].\n" +
                  std::string(kPrinted) + "the same\n",
              Shell("mount -t tmpfs -o size=16m tmpfs /disk && cp /work/old /disk/x.log\n"
                    "nelvoagentid --log /disk/x.log\n"
                    "cmp /work/old /disk/x.log && echo the same"));
}

// The archive finds room until it is completed, when the log is cut already; what the run tells is kept.
TEST_F(RunLogFile, DiskTooSmallForTheArchivesEndLosesTheOldLog)
{
    m_machine.HugeFile("/work/real.log", "", kLimit + 1);
    m_machine.Folder("/disk");
    EXPECT_EQ(std::string(kPrinted) + "8192\n",
              Shell("mount -t tmpfs -o size=8k tmpfs /disk && ln -s /work/real.log /disk/x.log\n"
                    "/tool/nelvoagentid --log /disk/x.log\n"
                    "stat -c %s /disk/x.log.gz"));
    EXPECT_EQ(kLines, Log("/work/real.log"));
}
