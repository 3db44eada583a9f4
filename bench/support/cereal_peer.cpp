#include <sstream>

#include <cereal/archives/binary.hpp>
#include <cereal/types/optional.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>

#include "bench/support/record_peers.h"

template <class Archive>
void serialize(Archive& archive, file_date_t& date)
{
    archive(date.is_utc, date.seconds);
}

template <class Archive>
void serialize(Archive& archive, file_record_t& record)
{
    archive(record.type, record.link_count, record.name, record.size, record.attributes, record.changed,
            record.modified, record.accessed, record.uid, record.gid, record.mode, record.acl.access,
            record.acl.fallback, record.extra_data);
}

record_peer_t Cereal(const std::vector<file_record_t>& records)
{
    return {[&records]
            {
                std::ostringstream bytes;
                cereal::BinaryOutputArchive archive(bytes);
                for (const file_record_t& record : records)
                    archive(record);
                return bytes.str();
            },
            [&records](const std::string& bytes)
            {
                std::istringstream stream(bytes);
                cereal::BinaryInputArchive archive(stream);
                std::uint64_t sum = 0;
                for (std::size_t i = 0; i != records.size(); ++i)
                {
                    file_record_t record;
                    archive(record);
                    sum += record.size.value();
                }
                return sum;
            }};
}
