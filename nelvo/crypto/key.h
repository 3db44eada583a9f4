#pragma once

// One key: its type and bytes that nobody here looks into. Held by a shared pointer. Any number of threads
// may read a key at the same time, but nobody while it is wiped.
//
// Stored form (io/binary_value.h): type and size, 4 bytes each, then the bytes.

#include <cstdint>

#include "nelvo/crypto/aes_key_iv_blob.h"
#include "nelvo/crypto/key_names.h"
#include "nelvo/crypto/secure_array.h"
#include "nelvo/io/io_dev.h"

namespace crypto
{

class CKey
{
public:
    // Copies the bytes. Any type is taken.
    CKey(std::uint32_t type, const secure_array_t& bytes);

    // Wipes.
    ~CKey();

    CKey(const CKey&) = delete;
    CKey& operator=(const CKey&) = delete;

    // key_names.h has the known ones.
    std::uint32_t GetType() const { return m_type; }

    // The key's own bytes.
    secure_array_t& GetData() { return *m_data; }
    const secure_array_t& GetData() const { return *m_data; }

    // New arrays and keys, with copies of the bytes.
    secure_array_ptr_t CopyData() const;
    boost::shared_ptr<CKey> Clone() const;

    // Whether there is another key, of the same type and with the same bytes.
    bool Equals(const boost::shared_ptr<CKey>& other) const;

    // Overwrites the bytes with 0, drops them and makes the type enUnknownKey. An empty key keeps its type.
    // Kept: Key.WipeLeavesTheTypeOfAnEmptyKey
    void Wipe();

    // True, for every key, public ones too.
    // Kept: Key.EveryKeyIsSensitive
    bool IsSensitive() const { return true; }

    // A short write of type or size fails as told in io/binary_value.h; one of the bytes goes unnoticed. A
    // key of 4 GiB or more throws exc::runtime_exc_t.
    // Kept: Key.ShortWriteOfTheBytesIsNotNoticed
    void Serialize(io::io_dev_t& stream) const;

    // Fails if type or size are cut off, with the marked context line "Failed to de-serialize encryption key
    // from memory stream." Bytes that are missing are 0. The size is not limited (std::bad_alloc), and those
    // take no memory until they are written to.
    // Kept: Key.MissingBytesAreReadAsZeros
    static boost::shared_ptr<CKey> DeSerialize(io::io_dev_t& stream);

    // The blob that a key of type enAESIVKey holds. Any other type is exc::runtime_exc_t with "Unexpected key
    // type: '<type>'.". Failures get the marked context line "Failed to cast key blob to AES key."
    boost::shared_ptr<CAesKeyIVBlob> ToAesKeyIVBlob() const;

private:
    std::uint32_t m_type;
    secure_array_ptr_t m_data;
};

} // namespace crypto
