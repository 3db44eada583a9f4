#pragma once

// A firmware table as the kernel shows it under /sys/firmware/dmi/tables: the entry point and the table of
// structures, in the bytes of the System Management BIOS standard.
//
//   smbios_table_t table(2, 6);
//   table.AddBios("Maker");
//   table.AddSystem("Maker", "Machine", id);
//   WriteFile(folder + "/smbios_entry_point", table.EntryPoint());
//   WriteFile(folder + "/DMI", table.Structures());

#include <array>
#include <cstdint>
#include <string>
#include <vector>

class smbios_table_t
{
public:
    using id_t = std::array<std::uint8_t, 16>;

    // From version 3 on the entry point is the 64-bit one, "_SM3_"; before, it is "_SM_" with "_DMI_".
    smbios_table_t(std::uint8_t major, std::uint8_t minor);

    // The structures stand in the table in the order of these calls. Ids of other handles are not asked for.
    void AddBios(const std::string& maker);
    void AddSystem(const std::string& maker, const std::string& product, const id_t& id);

    // A system structure of version 2.0, which ends before the id.
    void AddSystemWithoutId(const std::string& maker, const std::string& product);

    std::string EntryPoint() const;

    // Closed by the structure that ends every table.
    std::string Structures() const;

private:
    void Add(std::uint8_t type, const std::string& fields, const std::vector<std::string>& texts);
    std::string EntryPoint32() const;
    std::string EntryPoint64() const;

    std::uint8_t m_major;
    std::uint8_t m_minor;
    std::string m_structures;
    std::uint16_t m_count = 0;
    std::size_t m_longest = 0;
};
