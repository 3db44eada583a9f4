#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/run/machine.h"

// The whole way from the bytes of a firmware table, through the real dmidecode, to the printed id. It stands
// in the table in record order from version 2.6 on; before, dmidecode shows the bytes as they come.

namespace
{

const smbios_table_t::id_t kId = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,
                                  0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};

smbios_table_t TableWith(std::uint8_t major, std::uint8_t minor, const smbios_table_t::id_t& id)
{
    smbios_table_t table(major, minor);
    table.AddBios("Firmware Maker");
    table.AddSystem("Maker", "Machine", id);
    return table;
}

std::string PrintedWith(const smbios_table_t& table)
{
    machine_t machine;
    machine.Firmware(table);
    machine.Sysfs("99999999-9999-9999-9999-999999999999\n");
    const run_t run = machine.Run();

    EXPECT_EQ("", run.err);
    EXPECT_EQ(0, run.status);
    EXPECT_FALSE(machine.Exists("/etc/nelvoagentid"));
    return run.out;
}

const char kSysfsPrinted[] = "{99999999-9999-9999-9999-999999999999}\n";

} // namespace

// What the cases below rest on: the table is read without a complaint and to its end.
TEST(Firmware, TableIsWhatDmidecodeExpects)
{
    machine_t machine;
    machine.Firmware(TableWith(2, 6, kId));
    const run_t run = machine.Shell("dmidecode");

    EXPECT_EQ("# dmidecode 3.4\n"
              "Getting SMBIOS data from sysfs.\n"
              "SMBIOS 2.6 present.\n"
              "3 structures occupying 103 bytes.\n"
              "Table at 0x000F0000.\n"
              "\n",
              run.out.substr(0, run.out.find("Handle")));
    EXPECT_NE(std::string::npos, run.out.find("End Of Table"));
    EXPECT_EQ("", run.err);
    EXPECT_EQ(0, run.status);
}

TEST(Firmware, Version25ShowsTheBytesAsTheyStand)
{
    EXPECT_EQ("{33221100-5544-7766-8899-aabbccddeeff}\n", PrintedWith(TableWith(2, 5, kId)));
}

TEST(Firmware, Version26IsPrintedInTheOrderOfTheBytes)
{
    EXPECT_EQ("{00112233-4455-6677-8899-aabbccddeeff}\n", PrintedWith(TableWith(2, 6, kId)));
}

TEST(Firmware, Version30IsPrintedInTheOrderOfTheBytes)
{
    EXPECT_EQ("{00112233-4455-6677-8899-aabbccddeeff}\n", PrintedWith(TableWith(3, 0, kId)));
}

TEST(Firmware, AllZeroIdIsNoId) { EXPECT_EQ(kSysfsPrinted, PrintedWith(TableWith(2, 6, {}))); }

TEST(Firmware, AllOnesIdIsNoId)
{
    smbios_table_t::id_t ones = {};
    ones.fill(0xFF);

    EXPECT_EQ(kSysfsPrinted, PrintedWith(TableWith(2, 6, ones)));
}

TEST(Firmware, MakerWithTheWordUuidHidesTheId)
{
    smbios_table_t table(2, 6);
    table.AddSystem("Uuid Machines", "Machine", kId);

    EXPECT_EQ(kSysfsPrinted, PrintedWith(table));
}

TEST(Firmware, FirmwareMakerWithTheWordUuidHidesTheId)
{
    smbios_table_t table(3, 0);
    table.AddBios("A UUID company");
    table.AddSystem("Maker", "Machine", kId);

    EXPECT_EQ(kSysfsPrinted, PrintedWith(table));
}

TEST(Firmware, SystemWithoutIdGivesNone)
{
    smbios_table_t table(2, 0);
    table.AddSystemWithoutId("Maker", "Machine");

    EXPECT_EQ(kSysfsPrinted, PrintedWith(table));
}

TEST(Firmware, TableWithoutSystemGivesNoId)
{
    smbios_table_t table(2, 6);
    table.AddBios("Firmware Maker");

    EXPECT_EQ(kSysfsPrinted, PrintedWith(table));
}

TEST(Firmware, IdIsTheSameInEveryRunAndNeverStored)
{
    machine_t machine;
    machine.Firmware(TableWith(3, 0, kId));

    EXPECT_THAT(machine.Run(), Prints("{00112233-4455-6677-8899-aabbccddeeff}\n"));
    EXPECT_THAT(machine.Run(), Prints("{00112233-4455-6677-8899-aabbccddeeff}\n"));
    EXPECT_FALSE(machine.Exists("/etc/nelvoagentid"));
}

// dmidecode then looks for the firmware where this machine has none.
TEST(Firmware, MachineWithoutFirmwareGetsANewId)
{
    machine_t machine;
    machine.Link("/fake/dmidecode", "/usr/sbin/dmidecode");
    const run_t run = machine.Run();

    EXPECT_THAT(run, Prints(IsNewId()));
    EXPECT_EQ(run.out, machine.Read("/etc/nelvoagentid") + "\n");
}
