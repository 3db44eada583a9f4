// The unit for the first boot, as far as a shell can stand in for systemd: its umask, environment and
// commands.

#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/run/machine.h"
#include "tests/support/temp_folder.h"

using testing::ElementsAre;

namespace
{

const char kInstalled[] = "/usr/sbin/nelvoagentid";
const char kHere[] = "/tool/nelvoagentid";

// The value of a setting that the unit has once.
std::string Setting(const std::string& name)
{
    std::istringstream unit(ReadFile(FIRST_BOOT_UNIT));
    std::vector<std::string> values;
    for (std::string line; std::getline(unit, line);)
    {
        if (line.rfind(name + "=", 0) == 0)
            values.push_back(line.substr(name.size() + 1));
    }
    EXPECT_THAT(values, testing::SizeIs(1)) << name;
    return values.empty() ? std::string() : values.front();
}

std::string Command(const std::string& name)
{
    std::string command = Setting(name);
    const std::size_t tool = command.find(kInstalled);
    return tool != std::string::npos ? command.replace(tool, sizeof(kInstalled) - 1, kHere) : command;
}

std::string Start()
{
    return "umask " + Setting("UMask") + "; export " + Setting("Environment") + "; " + Command("ExecStart") +
           " && " + Command("ExecStartPost");
}

} // namespace

TEST(FirstBoot, NewIdIsStoredAndLoggedForRootAlone)
{
    machine_t machine;
    const run_t run = machine.Shell(Start());

    EXPECT_THAT(run, Prints(IsNewId()));
    EXPECT_EQ(run.out, machine.Read("/etc/nelvoagentid") + "\n");
    EXPECT_EQ(0600u, machine.Mode("/etc/nelvoagentid"));
    EXPECT_EQ(0600u, machine.Mode("/var/log/nelvoagentid.log"));
    EXPECT_THAT(machine.NewPaths(), ElementsAre("/etc/nelvoagentid", "/run/nelvoagentid.lock", "/var",
                                                "/var/log", "/var/log/nelvoagentid.log"));
}

TEST(FirstBoot, LaterOnesFindTheId)
{
    machine_t machine;
    const run_t first = machine.Shell(Start());

    EXPECT_THAT(machine.Shell(Start()), Prints(first.out));
    EXPECT_EQ(first.out, machine.Read("/etc/nelvoagentid") + "\n");
}

TEST(FirstBoot, FirmwaresIdNeedsNoFile)
{
    machine_t machine;
    machine.Sysfs("00112233-4455-6677-8899-aabbccddeeff\n");

    EXPECT_THAT(machine.Shell(Start()), Prints("{33221100-5544-7766-8899-aabbccddeeff}\n"));
    EXPECT_FALSE(machine.Exists("/etc/nelvoagentid"));
}

TEST(FirstBoot, FailureOfTheToolIsTheUnits)
{
    machine_t machine;
    machine.ReadOnlyFolder("/etc");

    EXPECT_THAT(machine.Shell(Start()), FailsWith("Failed to open file [/etc/nelvoagentid].\n"));
}

TEST(FirstBoot, RunsAtOnceAgreeOnOneId)
{
    machine_t machine;
    const run_t run = machine.Shell("for run in 1 2 3 4; do (" + Start() + ") & done; wait");
    const std::string id = machine.Read("/etc/nelvoagentid") + "\n";

    EXPECT_THAT(id, IsNewId());
    EXPECT_THAT(run, Prints(id + id + id + id));
}
