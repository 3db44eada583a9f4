#include "nelvo/crypto/key_set_collection.h"

#include <algorithm>

#include <boost/make_shared.hpp>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/numeric_cast.h"
#include "nelvo/io/binary_value.h"
#include "nelvo/io/mem_stream.h"

namespace crypto
{
namespace
{

template <class Matches>
void CollectClones(const CKeySetCollection::key_sets_t& from, CKeySetCollection::key_sets_t& to,
                   Matches matches)
{
    for (const auto& key_set : from)
        if (matches(*key_set))
            to.push_back(key_set->Clone());
}

} // namespace

void CKeySetCollection::Add(const CKeySet::ptr_t& key_set) { m_keySets.push_back(key_set); }

void CKeySetCollection::AddAll(const CKeySetCollection& other)
{
    const key_sets_t added = other.m_keySets; // the other may be this one
    m_keySets.insert(m_keySets.end(), added.begin(), added.end());
}

CKeySet::ptr_t CKeySetCollection::FindById(const CKeySetId& id) const
{
    const auto found =
        std::find_if(m_keySets.begin(), m_keySets.end(),
                     [&id](const auto& key_set) { return CKeySetId::Equal(key_set->GetId(), id); });
    return found != m_keySets.end() ? *found : nullptr;
}

CKeySet::ptr_t CKeySetCollection::GetById(const CKeySetId& id) const
{
    auto found = FindById(id);
    if (found == nullptr)
        throw exc::runtime_exc_t("Keyset '%1' not found.", id.ToString());
    return found;
}

void CKeySetCollection::CollectByAlgorithm(std::uint32_t algorithm, key_sets_t& found) const
{
    CollectClones(m_keySets, found,
                  [algorithm](const CKeySet& key_set) { return key_set.GetAlgorithm() == algorithm; });
}

void CKeySetCollection::CollectByRole(std::uint32_t role, key_sets_t& found) const
{
    CollectClones(m_keySets, found, [role](const CKeySet& key_set) { return key_set.GetRole() == role; });
}

CKeySetCollection::ptr_t CKeySetCollection::SubsetByAlgorithm(std::uint32_t algorithm) const
{
    auto subset = boost::make_shared<CKeySetCollection>();
    CollectByAlgorithm(algorithm, subset->m_keySets);
    return subset;
}

CKeySetCollection::ptr_t CKeySetCollection::SubsetByRole(std::uint32_t role) const
{
    auto subset = boost::make_shared<CKeySetCollection>();
    CollectByRole(role, subset->m_keySets);
    return subset;
}

CKeySetCollection::ptr_t CKeySetCollection::Clone() const
{
    auto clone = boost::make_shared<CKeySetCollection>();
    CollectClones(m_keySets, clone->m_keySets, [](const CKeySet&) { return true; });
    return clone;
}

void CKeySetCollection::Serialize(io::io_dev_t& stream) const
{
    io::WriteValue(stream, util::NumericCast<std::uint32_t>(m_keySets.size()));
    for (const auto& key_set : m_keySets)
        key_set->Serialize(stream);
}

CKeySetCollection::ptr_t CKeySetCollection::DeSerialize(io::io_dev_t& stream)
{
    auto collection = boost::make_shared<CKeySetCollection>();
    const auto count = io::ReadValue<std::uint32_t>(stream);
    for (std::uint32_t i = 0; i < count; ++i)
        collection->Add(CKeySet::DeSerialize(stream));
    return collection;
}

template <class Array>
void CKeySetCollection::SerializeToArray(const boost::shared_ptr<Array>& array) const
{
    io::mem_stream_tt<Array> stream(array);
    Serialize(stream);
}

template <class Array>
CKeySetCollection::ptr_t CKeySetCollection::DeSerializeFromArray(const boost::shared_ptr<Array>& array)
{
    io::mem_stream_tt<Array> stream(array);
    return DeSerialize(stream);
}

template void CKeySetCollection::SerializeToArray(const boost::shared_ptr<cnt::plain_array_t>&) const;
template void CKeySetCollection::SerializeToArray(const boost::shared_ptr<cnt::secure_array_t>&) const;
template CKeySetCollection::ptr_t
CKeySetCollection::DeSerializeFromArray(const boost::shared_ptr<cnt::plain_array_t>&);
template CKeySetCollection::ptr_t
CKeySetCollection::DeSerializeFromArray(const boost::shared_ptr<cnt::secure_array_t>&);

} // namespace crypto
