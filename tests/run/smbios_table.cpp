#include "tests/run/smbios_table.h"

#include <algorithm>
#include <numeric>

namespace
{

constexpr std::uint8_t kBios = 0;
constexpr std::uint8_t kSystem = 1;
constexpr std::uint8_t kEndOfTable = 127;

constexpr std::uint32_t kTableAddress = 0x000F0000;

// The value's low bytes, least significant first.
std::string Little(std::uint64_t value, int size)
{
    std::string bytes;
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}

std::string Byte(std::uint8_t value) { return Little(value, 1); }

// The byte that makes the sum of all bytes zero.
std::uint8_t Checksum(const std::string& bytes)
{
    const unsigned sum =
        std::accumulate(bytes.begin(), bytes.end(), 0u,
                        [](unsigned total, char byte) { return total + static_cast<std::uint8_t>(byte); });
    return static_cast<std::uint8_t>(0u - sum);
}

// Puts the checksum of the bytes into the one at this place.
std::string Sealed(std::string bytes, std::size_t place)
{
    bytes[place] = static_cast<char>(Checksum(bytes));
    return bytes;
}

std::string Header(std::uint8_t type, std::size_t length, std::uint16_t handle)
{
    return Byte(type) + Byte(static_cast<std::uint8_t>(length)) + Little(handle, 2);
}

} // namespace

smbios_table_t::smbios_table_t(std::uint8_t major, std::uint8_t minor) : m_major(major), m_minor(minor) {}

void smbios_table_t::AddBios(const std::string& maker)
{
    const std::string vendor_version = Byte(1) + Byte(2);
    const std::string start_segment = Little(0xE800, 2);
    const std::string release_date = Byte(3);
    const std::string rom_size = Byte(0xFF);
    const std::string characteristics = Little(0x08, 8) + Little(0, 2);
    const std::string releases = Byte(1) + Byte(0) + Byte(0xFF) + Byte(0xFF);
    Add(kBios, vendor_version + start_segment + release_date + rom_size + characteristics + releases,
        {maker, "1.0", "01/02/2020"});
}

void smbios_table_t::AddSystem(const std::string& maker, const std::string& product, const id_t& id)
{
    const std::string maker_product_version_serial = Byte(1) + Byte(2) + Byte(0) + Byte(0);
    const std::string wake_up = Byte(6);
    const std::string sku_family = Byte(0) + Byte(0);
    Add(kSystem, maker_product_version_serial + std::string(id.begin(), id.end()) + wake_up + sku_family,
        {maker, product});
}

void smbios_table_t::AddSystemWithoutId(const std::string& maker, const std::string& product)
{
    const std::string maker_product_version_serial = Byte(1) + Byte(2) + Byte(0) + Byte(0);
    Add(kSystem, maker_product_version_serial, {maker, product});
}

std::string smbios_table_t::EntryPoint() const { return m_major >= 3 ? EntryPoint64() : EntryPoint32(); }

std::string smbios_table_t::Structures() const
{
    return m_structures + Header(kEndOfTable, 4, m_count) + Little(0, 2);
}

// The texts follow the fields, each with a zero byte, and a zero byte ends them.
void smbios_table_t::Add(std::uint8_t type, const std::string& fields, const std::vector<std::string>& texts)
{
    std::string structure = Header(type, 4 + fields.size(), m_count) + fields;
    for (const std::string& text : texts)
        structure += text + Byte(0);
    structure += Byte(0);

    m_structures += structure;
    m_longest = std::max(m_longest, structure.size());
    ++m_count;
}

std::string smbios_table_t::EntryPoint32() const
{
    const std::string formatted_area(5, '\0');
    const auto decimal_revision = static_cast<std::uint8_t>(m_major << 4 | m_minor);
    const std::string dmi =
        Sealed("_DMI_" + Byte(0) + Little(Structures().size(), 2) + Little(kTableAddress, 4) +
                   Little(m_count + 1u, 2) + Byte(decimal_revision),
               5);
    return Sealed("_SM_" + Byte(0) + Byte(0x1F) + Byte(m_major) + Byte(m_minor) + Little(m_longest, 2) +
                      Byte(0) + formatted_area + dmi,
                  4);
}

std::string smbios_table_t::EntryPoint64() const
{
    const std::string document_revision = Byte(0);
    const std::string entry_point_revision = Byte(1);
    const std::string reserved = Byte(0);
    return Sealed("_SM3_" + Byte(0) + Byte(0x18) + Byte(m_major) + Byte(m_minor) + document_revision +
                      entry_point_revision + reserved + Little(Structures().size(), 4) +
                      Little(kTableAddress, 8),
                  5);
}
