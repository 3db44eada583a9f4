#include "nelvo/crypto/repair_record.h"

#include <exception>
#include <utility>

#include <boost/make_shared.hpp>

#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/numeric_cast.h"
#include "nelvo/io/binary_value.h"

namespace crypto
{
namespace
{

constexpr std::uint32_t kIdSize = SRawKeySetId::kSize;

} // namespace

CRestoreKeyRepairRec::CRestoreKeyRepairRec(CKeySetId::ptr_t master_id, secure_array_ptr_t data)
    : m_masterKeySetId(std::move(master_id)), m_data(std::move(data))
{
}

void CRestoreKeyRepairRec::Serialize(io::io_dev_t& stream) const
try
{
    const CKeySetId id = CKeySetId::ValueOf(m_masterKeySetId);
    io::WriteValue(stream, kIdSize);
    io::WriteRaw(stream, id.GetRaw().bytes, kIdSize);
    io::WriteValue(stream, util::NumericCast<std::uint32_t>(m_data->size()));
    io::WriteRaw(stream, m_data->data(), m_data->size());
}
catch (std::exception& e)
{
    exc::RethrowWithContext(true, "Failed to serialize keyset repair record from memory stream.", e);
}

boost::shared_ptr<CRestoreKeyRepairRec> CRestoreKeyRepairRec::DeSerialize(io::io_dev_t& stream)
try
{
    const auto id_size = io::ReadValue<std::uint32_t>(stream);
    if (id_size != kIdSize)
        throw exc::runtime_exc_t("The size of the serialized keyset id is unexpected (%1).", id_size);
    SRawKeySetId id;
    io::ReadRaw(stream, id.bytes, kIdSize);
    const auto size = io::ReadValue<std::uint32_t>(stream);
    const auto data = boost::make_shared<secure_array_t>(io::ReadRawArray<secure_array_t>(stream, size));
    return boost::make_shared<CRestoreKeyRepairRec>(boost::make_shared<CKeySetId>(id), data);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(true, "Failed to de-serialize keyset repair record from memory stream.", e);
}

} // namespace crypto
