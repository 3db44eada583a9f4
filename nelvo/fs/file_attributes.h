#pragma once

// The attribute bits of a file, as some other system keeps them: 32 bits that are carried and not
// interpreted. Stored as these 4 bytes.

#include <cstdint>

namespace io
{
class io_dev_t;
}

class CFileAttributes
{
public:
    CFileAttributes() = default;
    // Takes all bits.
    explicit CFileAttributes(std::uint32_t attributes) : m_attributes(attributes) {}

    // All 32 bits; 0 unless given.
    std::uint32_t GetAttributes() const { return m_attributes; }

    // Throws what io::WriteValue throws, with the context "CFileAttributes::Serialize: Can't serialize data."
    void Serialize(io::io_dev_t& stream) const;

    // Throw what io::ReadValue throws, with the context "CFileAttributes::DeSerialize: Can't deserialize
    // data."; the value stays then.
    void DeSerialize(io::io_dev_t& stream);
    static CFileAttributes FromStream(io::io_dev_t& stream);

private:
    std::uint32_t m_attributes = 0;
};
