#include <sstream>

#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/serialization/level.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/tracking.hpp>
#include <boost/serialization/vector.hpp>

#include "bench/support/record_peers.h"

// Plain values: no class versions, no tracking of addresses.
BOOST_CLASS_IMPLEMENTATION(file_date_t, boost::serialization::object_serializable)
BOOST_CLASS_TRACKING(file_date_t, boost::serialization::track_never)
BOOST_CLASS_IMPLEMENTATION(file_record_t, boost::serialization::object_serializable)
BOOST_CLASS_TRACKING(file_record_t, boost::serialization::track_never)

namespace
{

constexpr unsigned kFlags = boost::archive::no_header | boost::archive::no_codecvt;

// This version of the library has no form for std::optional.
template <class Archive, class Value>
void Transfer(Archive& archive, std::optional<Value>& value)
{
    bool has_value = value.has_value();
    archive& has_value;
    if (!has_value)
    {
        value.reset();
        return;
    }
    if (!value)
        value.emplace();
    archive&* value;
}

} // namespace

namespace boost::serialization
{

template <class Archive>
void serialize(Archive& archive, file_date_t& date, unsigned)
{
    archive& date.is_utc& date.seconds;
}

template <class Archive>
void serialize(Archive& archive, file_record_t& record, unsigned)
{
    Transfer(archive, record.type);
    Transfer(archive, record.link_count);
    Transfer(archive, record.name);
    Transfer(archive, record.size);
    Transfer(archive, record.attributes);
    archive& record.changed& record.modified& record.accessed;
    Transfer(archive, record.uid);
    Transfer(archive, record.gid);
    Transfer(archive, record.mode);
    Transfer(archive, record.acl.access);
    Transfer(archive, record.acl.fallback);
    archive& record.extra_data;
}

} // namespace boost::serialization

record_peer_t BoostSerialization(const std::vector<file_record_t>& records)
{
    return {[&records]
            {
                std::ostringstream bytes;
                boost::archive::binary_oarchive archive(bytes, kFlags);
                for (const file_record_t& record : records)
                    archive << record;
                return bytes.str();
            },
            [&records](const std::string& bytes)
            {
                std::istringstream stream(bytes);
                boost::archive::binary_iarchive archive(stream, kFlags);
                std::uint64_t sum = 0;
                for (std::size_t i = 0; i != records.size(); ++i)
                {
                    file_record_t record;
                    archive >> record;
                    sum += record.size.value();
                }
                return sum;
            }};
}
