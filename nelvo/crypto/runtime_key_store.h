#pragma once

// The key sets that the process has in memory, by their ids. Held by a shared pointer; the common library
// context has one. Any thread may use it at any time, and holds the store's lock as long as an operation
// takes.

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <boost/thread/recursive_mutex.hpp>

#include "nelvo/crypto/key_set.h"
#include "nelvo/crypto/processing_policy.h"

namespace crypto
{

class CRuntimeKeyStore
{
public:
    // The set itself; an empty pointer if there is none. The text is an id in 32 hexadecimal digits of either
    // case; any other finds nothing.
    CKeySet::ptr_t Find(const CKeySetId& id) const;
    CKeySet::ptr_t Find(std::string_view id) const;

    // As Find, but throws exc::runtime_exc_t with "Key set (id: '<id>') doesn't exist in runtime store.", and
    // for an empty pointer with "Key set ID is not specified."
    CKeySet::ptr_t Get(const CKeySetId& id) const;
    CKeySet::ptr_t Get(const CKeySetId::ptr_t& id) const;

    // Stores a clone (CKeySet::Clone), which shares the keys, in the place of a set with that id. An empty
    // pointer is exc::runtime_exc_t with "Key set is not specified."; the sets before it are stored by then.
    void Add(const CKeySet::ptr_t& key_set);
    void AddAll(const std::vector<CKeySet::ptr_t>& key_sets);

    // Append, in the order of the ids: the sets themselves, clones of all, the ids' texts.
    void CollectByRole(std::uint32_t role, std::vector<CKeySet::ptr_t>& found) const;
    void CloneAll(std::vector<CKeySet::ptr_t>& clones) const;
    void ListIds(std::vector<std::string>& ids) const;

    // No processing, until it is set.
    CCryptoProcessingPolicy GetPolicy() const;
    void SetPolicy(const CCryptoProcessingPolicy& policy);

private:
    mutable boost::recursive_mutex m_mutex; // guards all that follows
    std::map<CKeySetId, CKeySet::ptr_t> m_keySets;
    CCryptoProcessingPolicy m_policy;
};

} // namespace crypto
