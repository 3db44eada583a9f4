#include "nelvo/crypto/key_set.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <utility>

#include <boost/make_shared.hpp>
#include <boost/thread/lock_guard.hpp>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/numeric_cast.h"
#include "nelvo/core/util/wide.h"
#include "nelvo/io/binary_value.h"
#include "nelvo/logging/log.h"

namespace crypto
{
namespace
{

using lock_t = boost::lock_guard<boost::recursive_mutex>;

constexpr std::uint32_t kVersion = 1;
constexpr std::uint64_t kUnitsPerSecond = 10'000'000;

bool IsMasked()
{
    static const bool masked = logging::GetProcessLog()->is_mask_sensitive();
    return masked;
}

template <class Record>
void WriteEach(io::io_dev_t& stream, const std::vector<boost::shared_ptr<Record>>& records)
{
    for (const auto& record : records)
        record->Serialize(stream);
}

// The count is not to be trusted: nothing is made ahead of what comes.
template <class Record>
std::vector<boost::shared_ptr<Record>> ReadEach(io::io_dev_t& stream, std::uint32_t count)
{
    std::vector<boost::shared_ptr<Record>> records;
    for (std::uint32_t i = 0; i < count; ++i)
        records.push_back(Record::DeSerialize(stream));
    return records;
}

} // namespace

CKeySet::CKeySet(CKeySetId::ptr_t id, std::uint32_t algorithm, std::wstring hint, std::uint32_t role,
                 keys_t keys, repair_records_t repair_records, SKeySetTime creation_time)
    : m_algorithm(algorithm),
      m_id(std::move(id)),
      m_hint(std::move(hint)),
      m_keys(std::move(keys)),
      m_repairRecords(std::move(repair_records)),
      m_role(role),
      m_creationTime(creation_time)
{
}

std::uint32_t CKeySet::GetAlgorithm() const
{
    const lock_t lock(m_mutex);
    return m_algorithm;
}

std::uint32_t CKeySet::GetRole() const
{
    const lock_t lock(m_mutex);
    return m_role;
}

void CKeySet::SetRole(std::uint32_t role)
{
    const lock_t lock(m_mutex);
    m_role = role;
}

SKeySetTime CKeySet::GetCreationTime() const
{
    const lock_t lock(m_mutex);
    return m_creationTime;
}

CKeySetId::ptr_t CKeySet::GetId() const
{
    const lock_t lock(m_mutex);
    return m_id;
}

const std::wstring& CKeySet::GetHint() const
{
    const lock_t lock(m_mutex);
    return m_hint;
}

std::string CKeySet::GetAlgorithmName() const
{
    const lock_t lock(m_mutex);
    return KeyAlgorithmToString(m_algorithm);
}

std::string CKeySet::GetRoleName() const
{
    const lock_t lock(m_mutex);
    return KeyRoleToString(m_role);
}

std::string CKeySet::GetCreationTimeText() const
{
    const lock_t lock(m_mutex);
    const std::uint64_t units = std::uint64_t{m_creationTime.high} << 32 | m_creationTime.low;
    const auto seconds = static_cast<std::time_t>(units / kUnitsPerSecond);
    std::tm fields = {};
    if (::gmtime_r(&seconds, &fields) == nullptr)
    {
        const int error = errno;
        throw posix::errno_exc_t("Failed to convert time to readable format", error);
    }
    std::array<char, 32> clock = {};
    static_cast<void>(std::snprintf(clock.data(), clock.size(), "%02d:%02d:%02d", fields.tm_hour,
                                    fields.tm_min, fields.tm_sec));
    return util::Format("%1/%2/%3 %4", fields.tm_mday, fields.tm_mon, fields.tm_year, clock.data());
}

CKeySet::keys_t CKeySet::GetKeys() const
{
    const lock_t lock(m_mutex);
    return m_keys;
}

void CKeySet::SetKeys(const keys_t& keys)
{
    const lock_t lock(m_mutex);
    m_keys = keys;
}

CKeySet::repair_records_t CKeySet::GetRepairRecords() const
{
    const lock_t lock(m_mutex);
    return m_repairRecords;
}

void CKeySet::SetRepairRecords(const repair_records_t& records)
{
    const lock_t lock(m_mutex);
    m_repairRecords = records;
}

void CKeySet::AddKey(const boost::shared_ptr<CKey>& key)
{
    const lock_t lock(m_mutex);
    m_keys.push_back(key);
}

void CKeySet::AddRepairRecord(const CKeySetId::ptr_t& master_id, const secure_array_ptr_t& data)
{
    const lock_t lock(m_mutex);
    m_repairRecords.push_back(boost::make_shared<CRestoreKeyRepairRec>(master_id, data));
}

boost::shared_ptr<CKey> CKeySet::FindKey(std::uint32_t type) const
{
    const lock_t lock(m_mutex);
    const auto found = std::find_if(m_keys.begin(), m_keys.end(),
                                    [type](const auto& key) { return key->GetType() == type; });
    return found != m_keys.end() ? *found : nullptr;
}

bool CKeySet::HasKeys() const
{
    const lock_t lock(m_mutex);
    return !m_keys.empty();
}

bool CKeySet::HasRepairRecords() const
{
    const lock_t lock(m_mutex);
    return !m_repairRecords.empty();
}

std::size_t CKeySet::GetKeyCount() const
{
    const lock_t lock(m_mutex);
    return m_keys.size();
}

void CKeySet::WipeKeys()
{
    const lock_t lock(m_mutex);
    for (const auto& key : m_keys)
        key->Wipe();
}

std::string CKeySet::ToString() const
{
    const lock_t lock(m_mutex);
    std::string text = "ID: " + CKeySetId::ValueOf(m_id).ToString() + " (" + GetRoleName() + ")";
    if (IsMasked())
        return text;
    text += ", keys: " + std::to_string(m_keys.size());
    text += ", repair records: " + std::to_string(m_repairRecords.size());
    text += " (master keys:";
    for (const auto& record : m_repairRecords)
        text += " " + CKeySetId::ValueOf(record->GetMasterKeySetId()).ToString();
    return text + ")";
}

bool CKeySet::IsEqual(const ptr_t& other) const
{
    const lock_t lock(m_mutex);
    if (other == nullptr)
        return false;
    return m_algorithm == other->GetAlgorithm() && m_role == other->GetRole() &&
           m_hint.size() == other->GetHint().size() && m_keys.size() == other->GetKeyCount() &&
           std::all_of(m_keys.begin(), m_keys.end(),
                       [&other](const auto& key) { return key->Equals(other->FindKey(key->GetType())); });
}

CKeySet::ptr_t CKeySet::Clone() const
{
    const lock_t lock(m_mutex);
    return CloneWith(m_keys, m_repairRecords);
}

CKeySet::ptr_t CKeySet::CloneDeep() const
{
    const lock_t lock(m_mutex);
    keys_t keys;
    for (const auto& key : m_keys)
        keys.push_back(key->Clone());
    return CloneWith(std::move(keys), {});
}

CKeySet::ptr_t CKeySet::CloneWithoutSensitiveKeys() const
{
    const lock_t lock(m_mutex);
    keys_t keys;
    for (const auto& key : m_keys)
        if (!key->IsSensitive())
            keys.push_back(key);
    return CloneWith(std::move(keys), m_repairRecords);
}

// Under the lock.
CKeySet::ptr_t CKeySet::CloneWith(keys_t keys, repair_records_t records) const
{
    return boost::make_shared<CKeySet>(m_id, m_algorithm, m_hint, m_role, std::move(keys), std::move(records),
                                       m_creationTime);
}

void CKeySet::Serialize(io::io_dev_t& stream) const
{
    const lock_t lock(m_mutex);
    io::WriteValue(stream, kVersion);
    io::WriteValue(stream, m_algorithm);
    io::WriteString(stream, util::WideToUtf8(m_hint));
    io::WriteValue(stream, m_role);
    io::WriteValue(stream, util::NumericCast<std::uint32_t>(m_keys.size()));
    io::WriteValue(stream, util::NumericCast<std::uint32_t>(m_repairRecords.size()));
    io::WriteValue(stream, m_creationTime.low);
    io::WriteValue(stream, m_creationTime.high);
    WriteEach(stream, m_keys);
    WriteEach(stream, m_repairRecords);
    CKeySetId::ValueOf(m_id).Serialize(stream);
}

CKeySet::ptr_t CKeySet::DeSerialize(io::io_dev_t& stream)
{
    const auto version = io::ReadValue<std::uint32_t>(stream);
    if (version != kVersion)
        throw exc::runtime_exc_t("Unknown keyset version: '%1'.", version);
    const auto algorithm = io::ReadValue<std::uint32_t>(stream);
    std::wstring hint = util::Utf8ToWide(io::ReadString(stream));
    const auto role = io::ReadValue<std::uint32_t>(stream);
    const auto key_count = io::ReadValue<std::uint32_t>(stream);
    const auto record_count = io::ReadValue<std::uint32_t>(stream);
    SKeySetTime time = {};
    time.low = io::ReadValue<std::uint32_t>(stream);
    time.high = io::ReadValue<std::uint32_t>(stream);
    auto keys = ReadEach<CKey>(stream, key_count);
    auto records = ReadEach<CRestoreKeyRepairRec>(stream, record_count);
    auto id = CKeySetId::DeSerialize(stream);
    return boost::make_shared<CKeySet>(std::move(id), algorithm, std::move(hint), role, std::move(keys),
                                       std::move(records), time);
}

} // namespace crypto
