#include "bench/support/own_namespace.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include "bench/support/program.h"
#include "tests/run/smbios_table.h"

namespace fs = std::filesystem;

namespace
{

// In the place of what stands there, and not where a link there leads.
void WriteAnew(const std::string& path, const std::string& text)
{
    fs::remove(path);
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream file(path, std::ios::binary);
    file << text;
    CheckCall(!file.flush().fail(), path);
}

smbios_table_t Firmware()
{
    smbios_table_t table(3, 0);
    table.AddBios("Firmware Maker");
    table.AddSystem(
        "Maker", "Machine",
        {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF});
    return table;
}

} // namespace

own_namespace_t::own_namespace_t()
{
    CheckCall(::mkdtemp(m_folder.data()) != nullptr, m_folder);
    CheckCall(::unshare(CLONE_NEWNS) == 0, "unshare");
    CheckCall(::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "mount private");
    CheckCall(::mount("tmpfs", m_folder.c_str(), "tmpfs", 0, nullptr) == 0, "mount tmpfs");
    MakeEtc();
    MakeSys();
    fs::current_path(m_folder);
}

own_namespace_t::~own_namespace_t()
{
    std::error_code ignored;
    fs::current_path("/", ignored);
    ::umount2(m_folder.c_str(), MNT_DETACH);
    ::rmdir(m_folder.c_str());
}

void own_namespace_t::RemoveAgentFile() { fs::remove("/etc/nelvoagentid"); }

void own_namespace_t::MakeEtc() const
{
    fs::copy("/etc", m_folder + "/etc", fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    WriteAnew(m_folder + "/etc/nelvoagentid", kAgentFileId);
    WriteAnew(m_folder + "/etc/machine-id", "9fd5a6c42c1e4f3a8a709f0d3b6a5e21\n");
    Replace("/etc");
}

void own_namespace_t::MakeSys() const
{
    const smbios_table_t firmware = Firmware();
    WriteAnew(m_folder + "/sys/firmware/dmi/tables/smbios_entry_point", firmware.EntryPoint());
    WriteAnew(m_folder + "/sys/firmware/dmi/tables/DMI", firmware.Structures());
    Replace("/sys");
}

void own_namespace_t::Replace(const std::string& folder) const
{
    CheckCall(::mount((m_folder + folder).c_str(), folder.c_str(), nullptr, MS_BIND, nullptr) == 0,
              "mount " + folder);
}
