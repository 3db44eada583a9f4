#include "nelvo/crypto/key.h"

#include <exception>

#include <boost/make_shared.hpp>

#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/numeric_cast.h"
#include "nelvo/io/binary_value.h"

namespace crypto
{

CKey::CKey(std::uint32_t type, const secure_array_t& bytes)
    : m_type(type), m_data(boost::make_shared<secure_array_t>(bytes))
{
}

CKey::~CKey() { Wipe(); }

secure_array_ptr_t CKey::CopyData() const { return boost::make_shared<secure_array_t>(*m_data); }

boost::shared_ptr<CKey> CKey::Clone() const { return boost::make_shared<CKey>(m_type, *m_data); }

bool CKey::Equals(const boost::shared_ptr<CKey>& other) const
{
    return other != nullptr && m_type == other->m_type && *m_data == *other->m_data;
}

void CKey::Wipe()
{
    if (m_data->empty())
        return;
    m_data->resize(0);
    m_type = enUnknownKey;
}

void CKey::Serialize(io::io_dev_t& stream) const
{
    io::WriteValue(stream, m_type);
    io::WriteValue(stream, util::NumericCast<std::uint32_t>(m_data->size()));
    io::WriteRaw(stream, m_data->data(), m_data->size());
}

boost::shared_ptr<CKey> CKey::DeSerialize(io::io_dev_t& stream)
try
{
    const auto type = io::ReadValue<std::uint32_t>(stream);
    const auto size = io::ReadValue<std::uint32_t>(stream);
    auto key = boost::make_shared<CKey>(type, secure_array_t());
    *key->m_data = io::ReadRawArray<secure_array_t>(stream, size);
    return key;
}
catch (std::exception& e)
{
    exc::RethrowWithContext(true, "Failed to de-serialize encryption key from memory stream.", e);
}

boost::shared_ptr<CAesKeyIVBlob> CKey::ToAesKeyIVBlob() const
try
{
    if (m_type != enAESIVKey)
        throw exc::runtime_exc_t("Unexpected key type: '%1'.", KeyTypeToString(m_type));
    return CAesKeyIVBlob::FromBlob(m_data);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(true, "Failed to cast key blob to AES key.", e);
}

} // namespace crypto
