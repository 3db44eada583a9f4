#include <algorithm>
#include <array>
#include <cstdint>
#include <sstream>
#include <vector>

#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/make_shared.hpp>
#include <boost/serialization/array.hpp>
#include <boost/serialization/shared_ptr.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>

#include "bench/support/key_set_peer.h"

namespace
{

constexpr unsigned kFlags = boost::archive::no_header | boost::archive::no_codecvt;

struct key_t
{
    std::uint32_t type;
    boost::shared_ptr<std::vector<char>> data;

    template <class Archive>
    void serialize(Archive& archive, unsigned)
    {
        archive& type& data;
    }
};

struct id_t
{
    std::array<char, crypto::SRawKeySetId::kSize> bytes;

    template <class Archive>
    void serialize(Archive& archive, unsigned)
    {
        archive& bytes;
    }
};

struct repair_record_t
{
    boost::shared_ptr<id_t> master_id;
    boost::shared_ptr<std::vector<char>> data;

    template <class Archive>
    void serialize(Archive& archive, unsigned)
    {
        archive& master_id& data;
    }
};

struct key_set_t
{
    std::uint32_t algorithm;
    boost::shared_ptr<id_t> id;
    std::wstring hint;
    std::vector<boost::shared_ptr<key_t>> keys;
    std::vector<boost::shared_ptr<repair_record_t>> repair_records;
    std::uint32_t role;
    std::uint32_t time_low;
    std::uint32_t time_high;

    template <class Archive>
    void serialize(Archive& archive, unsigned)
    {
        archive& algorithm& id& hint& keys& repair_records& role& time_low& time_high;
    }
};

boost::shared_ptr<std::vector<char>> Copy(const crypto::secure_array_t& bytes)
{
    return boost::make_shared<std::vector<char>>(bytes.begin(), bytes.end());
}

boost::shared_ptr<id_t> Copy(const crypto::CKeySetId::ptr_t& id)
{
    auto copy = boost::make_shared<id_t>();
    std::copy_n(id->GetRaw().bytes, copy->bytes.size(), copy->bytes.begin());
    return copy;
}

boost::shared_ptr<key_set_t> Copy(const crypto::CKeySet& key_set)
{
    auto copy = boost::make_shared<key_set_t>();
    copy->algorithm = key_set.GetAlgorithm();
    copy->id = Copy(key_set.GetId());
    copy->hint = key_set.GetHint();
    for (const auto& key : key_set.GetKeys())
        copy->keys.push_back(boost::make_shared<key_t>(key_t{key->GetType(), Copy(key->GetData())}));
    for (const auto& record : key_set.GetRepairRecords())
        copy->repair_records.push_back(boost::make_shared<repair_record_t>(
            repair_record_t{Copy(record->GetMasterKeySetId()), Copy(*record->GetData())}));
    copy->role = key_set.GetRole();
    copy->time_low = key_set.GetCreationTime().low;
    copy->time_high = key_set.GetCreationTime().high;
    return copy;
}

} // namespace

key_set_peer_t BoostSerialization(const crypto::CKeySet& key_set)
{
    return {[copy = Copy(key_set)]
            {
                std::ostringstream bytes;
                boost::archive::binary_oarchive archive(bytes, kFlags);
                archive << copy;
                return bytes.str();
            },
            [](const std::string& bytes)
            {
                std::istringstream stream(bytes);
                boost::archive::binary_iarchive archive(stream, kFlags);
                boost::shared_ptr<key_set_t> read;
                archive >> read;
                return read->keys.size() + read->repair_records.size();
            }};
}
