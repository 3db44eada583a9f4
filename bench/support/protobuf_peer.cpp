#include <memory>

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/util/delimited_message_util.h>

#include "bench/support/record_peers.h"
#include "file_record.pb.h"

namespace
{

namespace pb = google::protobuf;

void SetDate(peer::Date& message, const file_date_t& date)
{
    message.set_is_utc(date.is_utc);
    message.set_seconds(date.seconds);
}

template <class Value, class Set>
void SetOptional(const std::optional<Value>& value, Set set)
{
    if (value)
        set(*value);
}

void Fill(peer::FileRecord& message, const file_record_t& record)
{
    message.Clear();
    SetOptional(record.type, [&](auto value) { message.set_type(value); });
    SetOptional(record.link_count, [&](auto value) { message.set_link_count(value); });
    SetOptional(record.name, [&](const auto& value) { message.set_name(value); });
    SetOptional(record.size, [&](auto value) { message.set_size(value); });
    SetOptional(record.attributes, [&](auto value) { message.set_attributes(value); });
    SetDate(*message.mutable_changed(), record.changed);
    SetDate(*message.mutable_modified(), record.modified);
    SetDate(*message.mutable_accessed(), record.accessed);
    SetOptional(record.uid, [&](auto value) { message.set_uid(value); });
    SetOptional(record.gid, [&](auto value) { message.set_gid(value); });
    SetOptional(record.mode, [&](auto value) { message.set_mode(value); });
    SetOptional(record.acl.access, [&](const auto& value) { message.set_access_acl(value); });
    SetOptional(record.acl.fallback, [&](const auto& value) { message.set_default_acl(value); });
    message.set_extra_data(record.extra_data.data(), record.extra_data.size());
}

// Writes what the work hands to its callee, one message after the other.
template <class Work>
std::string Serialized(Work work)
{
    std::string bytes;
    pb::io::StringOutputStream stream(&bytes);
    pb::io::CodedOutputStream coded(&stream);
    work([&](const peer::FileRecord& message)
         { pb::util::SerializeDelimitedToCodedStream(message, &coded); });
    coded.Trim();
    return bytes;
}

std::uint64_t SumOfSizes(const std::string& bytes)
{
    pb::io::ArrayInputStream stream(bytes.data(), static_cast<int>(bytes.size()));
    peer::FileRecord message;
    std::uint64_t sum = 0;
    while (pb::util::ParseDelimitedFromZeroCopyStream(&message, &stream, nullptr))
        sum += message.size();
    return sum;
}

} // namespace

record_peer_t Protobuf(const std::vector<file_record_t>& records)
{
    const auto write = [&records](const auto& serialize)
    {
        peer::FileRecord message;
        for (const file_record_t& record : records)
        {
            Fill(message, record);
            serialize(message);
        }
    };
    return {[write] { return Serialized(write); }, SumOfSizes};
}

record_peer_t ProtobufObjects(const std::vector<file_record_t>& records)
{
    const auto messages = std::make_shared<std::vector<peer::FileRecord>>(records.size());
    for (std::size_t i = 0; i != records.size(); ++i)
        Fill((*messages)[i], records[i]);
    const auto write = [messages](const auto& serialize)
    {
        for (const peer::FileRecord& message : *messages)
            serialize(message);
    };
    return {[write] { return Serialized(write); }, SumOfSizes};
}
