#include "nelvo/crypto/key_set_id.h"

#include <cstring>
#include <exception>

#include <boost/make_shared.hpp>

#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/to_text.h"
#include "nelvo/io/binary_value.h"

namespace crypto
{
namespace
{

constexpr std::uint32_t kSize = SRawKeySetId::kSize;

CKeySetId::ptr_t CheckedFromBlob(const CKeySetId::blob_t& blob, const char* failure)
{
    if (blob.size() != kSize)
        throw exc::runtime_exc_t(failure, blob.size(), kSize);
    SRawKeySetId id;
    std::memcpy(id.bytes, blob.data(), kSize);
    return boost::make_shared<CKeySetId>(id);
}

} // namespace

bool CKeySetId::IsEmpty() const { return *this == CKeySetId(); }

std::string CKeySetId::ToString() const
{
    std::string text;
    text.reserve(std::size_t{2} * kSize);
    for (const std::uint8_t byte : m_id.bytes)
        text += util::HexText(byte);
    return text;
}

boost::shared_ptr<CKeySetId::blob_t> CKeySetId::ToBlob() const
{
    return boost::make_shared<blob_t>(reinterpret_cast<const char*>(m_id.bytes), std::size_t{kSize});
}

CKeySetId::ptr_t CKeySetId::FromBlob(const boost::shared_ptr<blob_t>& blob)
{
    if (blob == nullptr)
        return nullptr;
    return CheckedFromBlob(
        *blob, "Cannot initialize keyset id by blob: unexpected length of the blob '%1' ( expected: '%2').");
}

CKeySetId::ptr_t CKeySetId::FromBlob(const blob_t& blob)
{
    return CheckedFromBlob(
        blob, "Cannot initialize keyset id by blob: unexpected length of the blob '%1' (expected: '%2').");
}

void CKeySetId::Serialize(io::io_dev_t& stream) const
{
    io::WriteRawValue(stream, kSize);
    io::WriteRaw(stream, m_id.bytes, kSize);
}

CKeySetId::ptr_t CKeySetId::DeSerialize(io::io_dev_t& stream)
try
{
    const auto size = io::ReadRawValue<std::uint32_t>(stream);
    if (size != kSize)
        throw exc::runtime_exc_t(
            "Serialized size of the SRawKeySetId is unexpected (%1). Expected size: '%2'.", size, kSize);
    SRawKeySetId id;
    io::ReadRaw(stream, id.bytes, kSize);
    return boost::make_shared<CKeySetId>(id);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(true, "Failed to deserialize keyset.", e);
}

int CKeySetId::Compare(const CKeySetId& other) const
{
    return std::memcmp(m_id.bytes, other.m_id.bytes, kSize);
}

} // namespace crypto
