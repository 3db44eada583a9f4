#pragma once

// An AES key with its initialisation vector, as bytes that nobody here looks into. Held by a shared pointer.
//
// Stored form, little-endian, 26 bytes and the two arrays:
//
//   offset  size
//   0       18    reserved: written as 0, ignored on reading
//   18      4     size of the key in bytes, unsigned
//   22      4     size of the vector in bytes, unsigned
//   26            key, then vector

#include "nelvo/crypto/secure_array.h"

namespace crypto
{

class CAesKeyIVBlob
{
public:
    // Shares both arrays.
    CAesKeyIVBlob(secure_array_ptr_t key, secure_array_ptr_t iv);

    // The first byte; null for an empty array. There must be a key array; without an array for the vector
    // there is no byte either.
    const char* GetKeyBytes() const;
    const char* GetIvBytes() const;

    // The array that was given, which may be null.
    const secure_array_ptr_t& GetIv() const { return m_iv; }

    // The stored form. Without an array for the vector, its size is 0. A size of 4 GiB or more throws
    // exc::runtime_exc_t.
    secure_array_t ToBlob() const;

    // Reads a stored form (not null) into new arrays. A form that is cut off is read all the same: what is
    // missing of the head, the key or the vector is 0, and an empty form gives an empty key and vector. The
    // sizes are not limited (std::bad_alloc). Failures get the marked context line "Failed to deserialize AES
    // key/IV blob, specified data size: '<size>'."
    // Kept: AesKeyIVBlob.CutOffFormIsReadWithZeros
    static boost::shared_ptr<CAesKeyIVBlob> FromBlob(const secure_array_ptr_t& blob);

private:
    secure_array_ptr_t m_key;
    secure_array_ptr_t m_iv;
};

} // namespace crypto
