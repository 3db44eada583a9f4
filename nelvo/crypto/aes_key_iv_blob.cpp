#include "nelvo/crypto/aes_key_iv_blob.h"

#include <cstdint>
#include <exception>
#include <utility>

#include <boost/make_shared.hpp>

#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/util/numeric_cast.h"
#include "nelvo/io/binary_value.h"
#include "nelvo/io/mem_stream.h"

namespace crypto
{
namespace
{

constexpr char kReserved[18] = {};

std::uint32_t SizeOf(const secure_array_ptr_t& array)
{
    return array != nullptr ? util::NumericCast<std::uint32_t>(array->size()) : 0;
}

const char* FirstByte(const secure_array_t& array) { return array.empty() ? nullptr : array.data(); }

secure_array_ptr_t ReadBytes(io::io_dev_t& stream, std::uint32_t size)
{
    return boost::make_shared<secure_array_t>(io::ReadRawArray<secure_array_t>(stream, size));
}

} // namespace

CAesKeyIVBlob::CAesKeyIVBlob(secure_array_ptr_t key, secure_array_ptr_t iv)
    : m_key(std::move(key)), m_iv(std::move(iv))
{
}

const char* CAesKeyIVBlob::GetKeyBytes() const { return FirstByte(*m_key); }

const char* CAesKeyIVBlob::GetIvBytes() const { return m_iv != nullptr ? FirstByte(*m_iv) : nullptr; }

secure_array_t CAesKeyIVBlob::ToBlob() const
{
    io::secure_mem_stream_t stream;
    io::WriteRaw(stream, kReserved, sizeof(kReserved));
    io::WriteValue(stream, SizeOf(m_key));
    io::WriteValue(stream, SizeOf(m_iv));
    io::WriteRaw(stream, GetKeyBytes(), SizeOf(m_key));
    io::WriteRaw(stream, GetIvBytes(), SizeOf(m_iv));
    return std::move(*stream.GetArray());
}

boost::shared_ptr<CAesKeyIVBlob> CAesKeyIVBlob::FromBlob(const secure_array_ptr_t& blob)
try
{
    io::secure_mem_stream_t stream(blob);
    char reserved[sizeof(kReserved)];
    io::ReadRaw(stream, reserved, sizeof(reserved));
    const auto key_size = io::ReadRawValue<std::uint32_t>(stream);
    const auto iv_size = io::ReadRawValue<std::uint32_t>(stream);
    const secure_array_ptr_t key = ReadBytes(stream, key_size);
    const secure_array_ptr_t iv = ReadBytes(stream, iv_size);
    return boost::make_shared<CAesKeyIVBlob>(key, iv);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(
        true, util::Format("Failed to deserialize AES key/IV blob, specified data size: '%1'.", blob->size()),
        e);
}

} // namespace crypto
