// What do a set of many keys and a collection of many sets cost on their way into memory and back?

#include "nelvo/crypto/key_set.h"
#include "nelvo/crypto/key_set_collection.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>

#include <boost/make_shared.hpp>

#include "bench/support/figure.h"
#include "bench/support/growth_figure.h"
#include "bench/support/key_set_peer.h"
#include "nelvo/io/mem_stream.h"

using crypto::CKeySet;
using crypto::CKeySetCollection;
using crypto::CKeySetId;

namespace
{

constexpr std::size_t kKeys = 1000;
constexpr std::size_t kRecords = 100;
constexpr std::size_t kSmallKey = 32;
constexpr std::size_t kBigKey = 1190;
constexpr double kWriteGoal = 0.3;
constexpr double kReadGoal = 0.7;

crypto::secure_array_t KeyBytes(std::size_t size, std::size_t number)
{
    crypto::secure_array_t bytes(size);
    for (std::size_t i = 0; i != size; ++i)
        bytes.data()[i] = static_cast<char>(i * 7 + number);
    return bytes;
}

crypto::SRawKeySetId RawId(std::size_t number)
{
    crypto::SRawKeySetId id{};
    std::memcpy(id.bytes, &number, sizeof(number));
    return id;
}

CKeySet::ptr_t KeySet(std::size_t key_size, std::size_t key_count)
{
    CKeySet::keys_t keys;
    for (std::size_t i = 0; i != key_count; ++i)
        keys.push_back(boost::make_shared<crypto::CKey>(crypto::enPrivateKey, KeyBytes(key_size, i)));
    auto key_set = boost::make_shared<CKeySet>(boost::make_shared<CKeySetId>(), 1, L"keys of the bench", 5,
                                               keys, CKeySet::repair_records_t(), crypto::SKeySetTime());
    for (std::size_t i = 0; i != kRecords; ++i)
        key_set->AddRepairRecord(boost::make_shared<CKeySetId>(),
                                 boost::make_shared<crypto::secure_array_t>(KeyBytes(key_size, i)));
    return key_set;
}

template <class Array, class Keys>
boost::shared_ptr<Array> Write(const Keys& keys)
{
    io::mem_stream_tt<Array> stream;
    keys.Serialize(stream);
    return stream.GetArray();
}

template <class Keys, class Array>
typename Keys::ptr_t Read(const boost::shared_ptr<Array>& bytes)
{
    io::mem_stream_tt<Array> stream(bytes);
    return Keys::DeSerialize(stream);
}

void AddFiguresOf(std::size_t key_size)
{
    const std::string keys = "key set, 1,000 keys of " + std::to_string(key_size) + " bytes, ";
    const CKeySet::ptr_t key_set = KeySet(key_size, kKeys);
    const auto plain = Write<cnt::plain_array_t>(*key_set);
    const auto secure = Write<cnt::secure_array_t>(*key_set);
    const key_set_peer_t peer = BoostSerialization(*key_set);
    const auto write_plain = [key_set] { return Write<cnt::plain_array_t>(*key_set); };
    const auto read_plain = [plain] { return Read<CKeySet>(plain); };
    if (peer.read(peer.write()) != kKeys + kRecords)
        std::abort();

    figure_t(keys + "written").Ours(write_plain).Against("Boost.Serialization", kWriteGoal, peer.write);
    figure_t(keys + "read")
        .Ours(read_plain)
        .Against("Boost.Serialization", kReadGoal, [peer, bytes = peer.write()] { return peer.read(bytes); });
    figure_t(keys + "written, secure stream")
        .Ours([key_set] { return Write<cnt::secure_array_t>(*key_set); })
        .Against("plain stream", write_plain);
    figure_t(keys + "read, secure stream")
        .Ours([secure] { return Read<CKeySet>(secure); })
        .Against("plain stream", read_plain);
}

void AddGrowthOfKeys()
{
    constexpr std::size_t kMostKeys = 2000;
    AddGrowthFigure("keys of a key set written", kMostKeys,
                    [](std::size_t count) {
                        return [key_set = KeySet(kSmallKey, count)]
                        { return Write<cnt::plain_array_t>(*key_set); };
                    });
    AddGrowthFigure("keys of a key set read", kMostKeys,
                    [](std::size_t count) {
                        return [bytes = Write<cnt::plain_array_t>(*KeySet(kSmallKey, count))]
                        { return Read<CKeySet>(bytes); };
                    });
}

// Small sets with ids of their own.
CKeySetCollection::ptr_t Collection(std::size_t count)
{
    auto collection = boost::make_shared<CKeySetCollection>();
    for (std::size_t i = 0; i != count; ++i)
        collection->Add(boost::make_shared<CKeySet>(
            boost::make_shared<CKeySetId>(RawId(i)), 1, L"hint", 5,
            CKeySet::keys_t{boost::make_shared<crypto::CKey>(crypto::enPrivateKey, KeyBytes(kSmallKey, i))},
            CKeySet::repair_records_t(), crypto::SKeySetTime()));
    return collection;
}

void AddGrowthOfCollection()
{
    constexpr std::size_t kSets = 1000;
    AddGrowthFigure("key sets of a collection written", kSets,
                    [](std::size_t count) {
                        return [collection = Collection(count)]
                        { return Write<cnt::plain_array_t>(*collection); };
                    });
    AddGrowthFigure("key sets of a collection read", kSets,
                    [](std::size_t count)
                    {
                        return [bytes = Write<cnt::plain_array_t>(*Collection(count))]
                        { return Read<CKeySetCollection>(bytes); };
                    });
    AddGrowthFigure("look-up of the last key set of a collection", kSets,
                    [](std::size_t count)
                    {
                        return [collection = Collection(count), last = CKeySetId(RawId(count - 1))]
                        { return collection->GetById(last); };
                    });
}

} // namespace

void AddFigures()
{
    AddFiguresOf(kSmallKey);
    AddFiguresOf(kBigKey);
    AddGrowthOfKeys();
    AddGrowthOfCollection();
}
