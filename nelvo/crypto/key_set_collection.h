#pragma once

// A list of key sets. Held by a shared pointer. It has no lock, and none of its sets may be null.
//
// Stored form (io/binary_value.h): the number of sets in 4 bytes, then the sets.

#include <cstddef>
#include <cstdint>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "nelvo/crypto/key_set.h"

namespace crypto
{

class CKeySetCollection
{
public:
    using ptr_t = boost::shared_ptr<CKeySetCollection>;
    using key_sets_t = std::vector<CKeySet::ptr_t>;

    // The number of sets, those with the same id each for itself.
    std::size_t GetCount() const { return m_keySets.size(); }

    // Appends, and shares what it appends. Several sets may have the same id.
    void Add(const CKeySet::ptr_t& key_set);
    void AddAll(const CKeySetCollection& other);

    // The first set with the id, itself. Without one, Find gives an empty pointer, and Get throws
    // exc::runtime_exc_t with "Keyset '<id>' not found."
    CKeySet::ptr_t FindById(const CKeySetId& id) const;
    CKeySet::ptr_t GetById(const CKeySetId& id) const;

    // Append clones (CKeySet::Clone) of the sets that match.
    void CollectByAlgorithm(std::uint32_t algorithm, key_sets_t& found) const;
    void CollectByRole(std::uint32_t role, key_sets_t& found) const;

    // New collections of clones.
    ptr_t SubsetByAlgorithm(std::uint32_t algorithm) const;
    ptr_t SubsetByRole(std::uint32_t role) const;
    ptr_t Clone() const;

    // As CKeySet does, with its failures.
    void Serialize(io::io_dev_t& stream) const;
    static ptr_t DeSerialize(io::io_dev_t& stream);

    // To and from the beginning of an array (not null). What stands behind the form in the array stays there.
    // A plain array leaves copies of the key bytes in memory that is given back; a secure one does not.
    // Kept: KeySetCollection.SerializeToArrayLeavesWhatStandsBehind
    template <class Array>
    void SerializeToArray(const boost::shared_ptr<Array>& array) const;
    template <class Array>
    static ptr_t DeSerializeFromArray(const boost::shared_ptr<Array>& array);

private:
    key_sets_t m_keySets;
};

extern template void CKeySetCollection::SerializeToArray(const boost::shared_ptr<cnt::plain_array_t>&) const;
extern template void CKeySetCollection::SerializeToArray(const boost::shared_ptr<cnt::secure_array_t>&) const;
extern template CKeySetCollection::ptr_t
CKeySetCollection::DeSerializeFromArray(const boost::shared_ptr<cnt::plain_array_t>&);
extern template CKeySetCollection::ptr_t
CKeySetCollection::DeSerializeFromArray(const boost::shared_ptr<cnt::secure_array_t>&);

} // namespace crypto
