#pragma once

// Whether data is to be encrypted, decrypted or left alone, and with which key set. A plain value for one
// thread.
//
// Stored form (io/binary_value.h): the type in 4 bytes, the extra flag in 4 bytes and, for enCrypt alone, the
// id of the key set in 20 bytes.

#include <cstdint>
#include <string>

#include "nelvo/crypto/key_set_id.h"
#include "nelvo/io/io_dev.h"

class CCryptoProcessingPolicy
{
public:
    static constexpr std::uint32_t enNoCryptoProcessing = 0;
    static constexpr std::uint32_t enDecrypt = 1;
    static constexpr std::uint32_t enCrypt = 2;

    // No processing.
    CCryptoProcessingPolicy() = default;

    // With a pointer that is not empty, also one to the empty id, data is encrypted; otherwise decrypted.
    CCryptoProcessingPolicy(bool enabled, crypto::CKeySetId::ptr_t target, bool extra_flag);

    // One of the three.
    std::uint32_t GetType() const;

    // The type's name; any other value in decimal.
    static std::string TypeToString(std::uint32_t type);

    // As they were given or read. The id may be null, and the flag is carried and not interpreted.
    const crypto::CKeySetId::ptr_t& GetTargetKeySetId() const { return m_targetKeySetId; }
    bool GetExtraFlag() const { return m_extraFlag; }

    // Throws exc::runtime_exc_t with "Encryption key is not specified for crypto processing policy
    // (type:'<type>')." if there is no key set.
    void RequireKey() const;

    // "Policy: '<type>', target keyset ID: '<id>'", with "null" without a key set.
    std::string ToString() const;

    // Adds no context to failures.
    void Serialize(io::io_dev_t& stream) const;

    // An unknown type is taken for enCrypt. A failure leaves the policy as it was, and gets the marked
    // context line "Failed to deserialize crypto policy."
    // Kept: ProcessingPolicy.UnknownTypeIsReadAsEnCrypt
    void DeSerialize(io::io_dev_t& stream);

private:
    bool m_processingEnabled = false;
    crypto::CKeySetId::ptr_t m_targetKeySetId;
    bool m_extraFlag = false;
};
