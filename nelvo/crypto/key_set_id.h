#pragma once

// The id of a key set: 16 bytes, in storage order. Sixteen zero bytes are the empty id, and so is an empty
// pointer to an id.
//
// Stored form, 20 bytes: the size, 16, in 4 bytes (io/binary_value.h), then the bytes.

#include <cstddef>
#include <cstdint>
#include <string>

#include <boost/shared_ptr.hpp>

#include "nelvo/core/cnt/array.h"
#include "nelvo/io/io_dev.h"

namespace crypto
{

struct SRawKeySetId
{
    static constexpr std::size_t kSize = 16;

    std::uint8_t bytes[kSize];
};

class CKeySetId
{
public:
    using ptr_t = boost::shared_ptr<CKeySetId>;
    using blob_t = cnt::plain_array_t;

    // Empty.
    CKeySetId() = default;

    // Takes the bytes as they are; sixteen zeros make an empty id.
    explicit CKeySetId(const SRawKeySetId& id) : m_id(id) {}

    // Whether all bytes are zero, or there is no id.
    bool IsEmpty() const;
    static bool IsEmpty(const ptr_t& id) { return id == nullptr || id->IsEmpty(); }

    // Whether both are empty or have the same bytes.
    static bool Equal(const CKeySetId& left, const CKeySetId& right) { return left == right; }
    static bool Equal(const CKeySetId& left, const ptr_t& right) { return left == ValueOf(right); }
    static bool Equal(const ptr_t& left, const CKeySetId& right) { return ValueOf(left) == right; }
    static bool Equal(const ptr_t& left, const ptr_t& right) { return ValueOf(left) == ValueOf(right); }

    // The id itself; the empty id for an empty pointer.
    static CKeySetId ValueOf(const ptr_t& id) { return id != nullptr ? *id : CKeySetId(); }

    // 32 lower-case hexadecimal digits.
    std::string ToString() const;

    // A new array with the 16 bytes.
    boost::shared_ptr<blob_t> ToBlob() const;

    // An array of exactly 16 bytes. Any other size is exc::runtime_exc_t; the texts of the two forms differ
    // in one blank. An empty pointer gives an empty pointer.
    // Kept: KeySetId.BlobOfAnotherSizeIsRefusedInTwoTexts
    static ptr_t FromBlob(const boost::shared_ptr<blob_t>& blob);
    static ptr_t FromBlob(const blob_t& blob);

    // Of every id, in bytes.
    static constexpr std::uint32_t GetSerializedSize() { return sizeof(std::uint32_t) + SRawKeySetId::kSize; }

    // A short write goes unnoticed.
    // Kept: KeySetId.ShortWriteIsNotNoticed
    void Serialize(io::io_dev_t& stream) const;

    // A size that is not 16 is exc::runtime_exc_t, with the marked context line "Failed to deserialize
    // keyset."; of a size that is cut off the missing bytes are 0, and so are missing bytes of the id.
    // Kept: KeySetId.MissingBytesAreReadAsZeros
    static ptr_t DeSerialize(io::io_dev_t& stream);

    // The bytes, which hold as long as the object.
    const SRawKeySetId& GetRaw() const { return m_id; }

    // As memcmp.
    friend bool operator==(const CKeySetId& left, const CKeySetId& right) { return left.Compare(right) == 0; }
    friend bool operator!=(const CKeySetId& left, const CKeySetId& right) { return left.Compare(right) != 0; }
    friend bool operator<(const CKeySetId& left, const CKeySetId& right) { return left.Compare(right) < 0; }

private:
    int Compare(const CKeySetId& other) const;

    SRawKeySetId m_id{};
};

} // namespace crypto
