// What does a set of many keys cost on its way into memory and back?

#include "nelvo/crypto/key_set.h"

#include <cstdlib>

#include <boost/make_shared.hpp>

#include "bench/support/figure.h"
#include "bench/support/key_set_peer.h"
#include "nelvo/io/mem_stream.h"

using crypto::CKeySet;

namespace
{

constexpr std::size_t kKeys = 1000;
constexpr std::size_t kRecords = 100;
constexpr double kWriteGoal = 0.3;
constexpr double kReadGoal = 0.7;

crypto::secure_array_t KeyBytes(std::size_t size, std::size_t number)
{
    crypto::secure_array_t bytes(size);
    for (std::size_t i = 0; i != size; ++i)
        bytes.data()[i] = static_cast<char>(i * 7 + number);
    return bytes;
}

CKeySet::ptr_t KeySet(std::size_t key_size)
{
    CKeySet::keys_t keys;
    for (std::size_t i = 0; i != kKeys; ++i)
        keys.push_back(boost::make_shared<crypto::CKey>(crypto::enPrivateKey, KeyBytes(key_size, i)));
    auto key_set =
        boost::make_shared<CKeySet>(boost::make_shared<crypto::CKeySetId>(), 1, L"keys of the bench", 5, keys,
                                    CKeySet::repair_records_t(), crypto::SKeySetTime());
    for (std::size_t i = 0; i != kRecords; ++i)
        key_set->AddRepairRecord(boost::make_shared<crypto::CKeySetId>(),
                                 boost::make_shared<crypto::secure_array_t>(KeyBytes(key_size, i)));
    return key_set;
}

template <class Array>
boost::shared_ptr<Array> Write(const CKeySet& key_set)
{
    io::mem_stream_tt<Array> stream;
    key_set.Serialize(stream);
    return stream.GetArray();
}

template <class Array>
CKeySet::ptr_t Read(const boost::shared_ptr<Array>& bytes)
{
    io::mem_stream_tt<Array> stream(bytes);
    return CKeySet::DeSerialize(stream);
}

void AddFiguresOf(std::size_t key_size)
{
    const std::string keys = "1,000 keys of " + std::to_string(key_size) + " bytes ";
    const CKeySet::ptr_t key_set = KeySet(key_size);
    const auto plain = Write<cnt::plain_array_t>(*key_set);
    const auto secure = Write<cnt::secure_array_t>(*key_set);
    const key_set_peer_t peer = BoostSerialization(*key_set);
    const auto write_plain = [key_set] { return Write<cnt::plain_array_t>(*key_set); };
    const auto read_plain = [plain] { return Read(plain); };
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
        .Ours([secure] { return Read(secure); })
        .Against("plain stream", read_plain);
}

} // namespace

void AddFigures()
{
    AddFiguresOf(32);
    AddFiguresOf(1190);
}
