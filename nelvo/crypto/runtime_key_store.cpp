#include "nelvo/crypto/runtime_key_store.h"

#include <utility>

#include <boost/thread/lock_guard.hpp>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/hex.h"

namespace crypto
{
namespace
{

using lock_t = boost::lock_guard<boost::recursive_mutex>;

// Empty for a text that is no id. The length is looked at first, and so no long text is converted.
CKeySetId::ptr_t IdFromText(std::string_view text)
try
{
    return text.size() == 2 * SRawKeySetId::kSize ? CKeySetId::FromBlob(util::BytesFromHex(text)) : nullptr;
}
catch (exc::runtime_exc_t&)
{
    return nullptr;
}

} // namespace

CKeySet::ptr_t CRuntimeKeyStore::Find(const CKeySetId& id) const
{
    const lock_t lock(m_mutex);
    const auto found = m_keySets.find(id);
    return found != m_keySets.end() ? found->second : nullptr;
}

CKeySet::ptr_t CRuntimeKeyStore::Find(std::string_view id) const
{
    const lock_t lock(m_mutex);
    const auto value = IdFromText(id);
    return value != nullptr ? Find(*value) : nullptr;
}

CKeySet::ptr_t CRuntimeKeyStore::Get(const CKeySetId& id) const
{
    const lock_t lock(m_mutex);
    auto found = Find(id);
    if (found == nullptr)
        throw exc::runtime_exc_t("Key set (id: '%1') doesn't exist in runtime store.", id.ToString());
    return found;
}

CKeySet::ptr_t CRuntimeKeyStore::Get(const CKeySetId::ptr_t& id) const
{
    const lock_t lock(m_mutex);
    if (id == nullptr)
        throw exc::runtime_exc_t("Key set ID is not specified.");
    return Get(*id);
}

void CRuntimeKeyStore::Add(const CKeySet::ptr_t& key_set)
{
    const lock_t lock(m_mutex);
    if (key_set == nullptr)
        throw exc::runtime_exc_t("Key set is not specified.");
    auto clone = key_set->Clone();
    m_keySets[CKeySetId::ValueOf(clone->GetId())] = std::move(clone);
}

void CRuntimeKeyStore::AddAll(const std::vector<CKeySet::ptr_t>& key_sets)
{
    const lock_t lock(m_mutex);
    for (const auto& key_set : key_sets)
        Add(key_set);
}

void CRuntimeKeyStore::CollectByRole(std::uint32_t role, std::vector<CKeySet::ptr_t>& found) const
{
    const lock_t lock(m_mutex);
    for (const auto& [id, key_set] : m_keySets)
        if (key_set->GetRole() == role)
            found.push_back(key_set);
}

void CRuntimeKeyStore::CloneAll(std::vector<CKeySet::ptr_t>& clones) const
{
    const lock_t lock(m_mutex);
    for (const auto& [id, key_set] : m_keySets)
        clones.push_back(key_set->Clone());
}

void CRuntimeKeyStore::ListIds(std::vector<std::string>& ids) const
{
    const lock_t lock(m_mutex);
    for (const auto& [id, key_set] : m_keySets)
        ids.push_back(id.ToString());
}

CCryptoProcessingPolicy CRuntimeKeyStore::GetPolicy() const
{
    const lock_t lock(m_mutex);
    return m_policy;
}

void CRuntimeKeyStore::SetPolicy(const CCryptoProcessingPolicy& policy)
{
    const lock_t lock(m_mutex);
    m_policy = policy;
}

} // namespace crypto
