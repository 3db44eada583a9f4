// Stored collections of key sets.

#include "nelvo/crypto/key_set_collection.h"

#include "fuzz/stream.h"

using crypto::CKeySetCollection;

namespace
{

// From an array and to one, as through a stream.
template <class Array>
void TryArray(const fuzz::array_ptr_t& stored)
{
    const auto array = boost::make_shared<Array>(stored->data(), stored->size());
    const auto collection = CKeySetCollection::DeSerializeFromArray(array);
    const auto again = boost::make_shared<Array>();
    collection->SerializeToArray(again);
    fuzz::Require(*again == *array);
}

void TryChoice(const CKeySetCollection& collection)
{
    CKeySetCollection::key_sets_t found;
    for (const std::uint32_t role : {0U, 1U, 2U, 3U, 4U, 5U, 6U})
        collection.CollectByRole(role, found);
    fuzz::Require(found.size() <= collection.GetCount());
    fuzz::Require(collection.Clone()->GetCount() == collection.GetCount());
    const std::size_t chosen = collection.SubsetByAlgorithm(0)->GetCount();
    found.clear();
    collection.CollectByAlgorithm(0, found);
    fuzz::Require(found.size() == chosen);
    for (const auto& key_set : found)
        fuzz::Require(collection.FindById(crypto::CKeySetId::ValueOf(key_set->GetId())) != nullptr);
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const auto collection = TryMade<CKeySetCollection>(Array(data, size));
    if (collection == nullptr)
        return;
    const auto stored = Stored(*collection, [](const CKeySetCollection& from, io::io_dev_t& stream)
                               { from.Serialize(stream); });
    TryArray<cnt::plain_array_t>(stored);
    TryArray<cnt::secure_array_t>(stored);
    TryChoice(*collection);
}
