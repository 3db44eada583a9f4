// What do records cost on their way into memory and back, and through the buffered device into a file?

#include "nelvo/io/binary_value.h"
#include "nelvo/io/buffered_stream.h"
#include "nelvo/io/mem_stream.h"

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <unistd.h>

#include <boost/make_shared.hpp>

#include "bench/support/bench_folder.h"
#include "bench/support/figure.h"
#include "bench/support/record_peers.h"

namespace
{

constexpr std::size_t kRecords = 100000;
constexpr std::size_t kFewRecords = 25000;
constexpr std::size_t kFileRecords = 20000;
constexpr std::uint32_t kAclMagic = 0x646C6361;

void WriteDate(io::io_dev_t& stream, const file_date_t& date)
{
    io::WriteValue(stream, date.is_utc);
    io::WriteValue(stream, date.seconds);
}

void WriteRecord(io::io_dev_t& stream, const file_record_t& record)
{
    io::WriteOptionalValue(stream, record.type);
    io::WriteOptionalValue(stream, record.link_count);
    io::WriteOptionalString(stream, record.name);
    io::WriteOptionalValue(stream, record.size);
    io::WriteOptionalValue(stream, record.attributes);
    WriteDate(stream, record.changed);
    WriteDate(stream, record.modified);
    WriteDate(stream, record.accessed);
    io::WriteOptionalValue(stream, record.uid);
    io::WriteOptionalValue(stream, record.gid);
    io::WriteOptionalValue(stream, record.mode);
    io::WriteValue(stream, kAclMagic);
    io::WriteOptionalString(stream, record.acl.access);
    io::WriteOptionalString(stream, record.acl.fallback);
    io::WriteString(stream, std::string_view(record.extra_data.data(), record.extra_data.size()));
}

file_date_t ReadDate(io::io_dev_t& stream)
{
    return {io::ReadValue<bool>(stream), io::ReadValue<std::int64_t>(stream)};
}

file_acl_t ReadAcl(io::io_dev_t& stream)
{
    if (io::ReadValue<std::uint32_t>(stream) != kAclMagic)
        std::abort();
    return {io::ReadOptionalString(stream), io::ReadOptionalString(stream)};
}

std::vector<char> ReadExtraData(io::io_dev_t& stream)
{
    const auto bytes = io::ReadArray<cnt::plain_array_t>(stream);
    return {bytes.begin(), bytes.end()};
}

// A list in braces is read in its order.
file_record_t ReadRecord(io::io_dev_t& stream)
{
    return {io::ReadOptionalValue<std::uint32_t>(stream),
            io::ReadOptionalValue<std::uint32_t>(stream),
            io::ReadOptionalString(stream),
            io::ReadOptionalValue<std::uint64_t>(stream),
            io::ReadOptionalValue<std::uint32_t>(stream),
            ReadDate(stream),
            ReadDate(stream),
            ReadDate(stream),
            io::ReadOptionalValue<std::uint64_t>(stream),
            io::ReadOptionalValue<std::uint64_t>(stream),
            io::ReadOptionalValue<std::uint32_t>(stream),
            ReadAcl(stream),
            ReadExtraData(stream)};
}

boost::shared_ptr<cnt::plain_array_t> WriteRecords(const std::vector<file_record_t>& records)
{
    io::plain_mem_stream_t stream;
    for (const file_record_t& record : records)
        WriteRecord(stream, record);
    return stream.GetArray();
}

std::uint64_t ReadRecords(const boost::shared_ptr<cnt::plain_array_t>& bytes)
{
    io::plain_mem_stream_t stream(bytes);
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i != kRecords; ++i)
        sum += ReadRecord(stream).size.value();
    return sum;
}

const std::vector<file_record_t>& Records()
{
    static const std::vector<file_record_t> records = FileRecords(kRecords);
    return records;
}

void AddWrite()
{
    constexpr double kGoal = 0.65;
    constexpr double kProtobufGoal = 1.1;
    figure_t("100,000 records to memory")
        .Ours([] { return WriteRecords(Records()); })
        .Against("Boost.Serialization", kGoal, BoostSerialization(Records()).write)
        .Against("cereal", kGoal, Cereal(Records()).write)
        .Against("protobuf", kProtobufGoal, Protobuf(Records()).write)
        .Against("protobuf, its own objects", ProtobufObjects(Records()).write);
}

auto ReadWork(const record_peer_t& peer)
{
    return [read = peer.read, bytes = peer.write()] { return read(bytes); };
}

void AddRead()
{
    constexpr double kGoal = 0.8;
    figure_t("100,000 records from memory")
        .Ours([bytes = WriteRecords(Records())] { return ReadRecords(bytes); })
        .Against("Boost.Serialization", kGoal, ReadWork(BoostSerialization(Records())))
        .Against("cereal", kGoal, ReadWork(Cereal(Records())))
        .Against("protobuf", ReadWork(Protobuf(Records())));
}

// Twice the records shall take twice the time.
void AddGrowth()
{
    constexpr double kGoal = 1.3;
    static const std::vector<file_record_t> records = FileRecords(2 * kFewRecords);
    static const std::vector<file_record_t> half = FileRecords(kFewRecords);
    figure_t("50,000 records to memory")
        .Ours([] { return WriteRecords(records); })
        .Against("twice 25,000", kGoal,
                 []
                 {
                     benchmark::DoNotOptimize(WriteRecords(half));
                     return WriteRecords(half);
                 });
}

class file_dev_t : public io::io_dev_t
{
public:
    explicit file_dev_t(const std::string& path) : m_file(::open(path.c_str(), O_CREAT | O_WRONLY, 0600)) {}
    ~file_dev_t() override { ::close(m_file); }
    file_dev_t(const file_dev_t&) = delete;
    file_dev_t& operator=(const file_dev_t&) = delete;

    std::uint64_t write(const void* data, std::uint64_t count) override
    {
        if (::write(m_file, data, count) != static_cast<ssize_t>(count))
            std::abort();
        return count;
    }
    std::uint64_t read(void*, std::uint64_t) override { return 0; }

    void Rewind() const { ::lseek(m_file, 0, SEEK_SET); }

private:
    int m_file;
};

// Twelve values and a name. Both ways write the same bytes over the same file, again and again.
template <class WriteValue, class WriteName>
void WriteFields(const file_record_t& record, const WriteValue& value, const WriteName& name)
{
    value(*record.type);
    value(*record.link_count);
    name(*record.name);
    value(*record.size);
    value(std::uint32_t{record.changed.is_utc});
    value(record.changed.seconds);
    value(std::uint32_t{record.modified.is_utc});
    value(record.modified.seconds);
    value(std::uint32_t{record.accessed.is_utc});
    value(record.accessed.seconds);
    value(*record.uid);
    value(*record.gid);
    value(*record.mode);
}

void WriteToStream(io::io_dev_t& stream, const file_record_t& record)
{
    WriteFields(
        record, [&](auto value) { io::WriteValue(stream, value); },
        [&](const std::string& name) { io::WriteString(stream, name); });
}

void WriteToFile(std::ofstream& file, const file_record_t& record)
{
    const auto write = [&](auto value) { file.write(reinterpret_cast<const char*>(&value), sizeof(value)); };
    WriteFields(record, write,
                [&](const std::string& name)
                {
                    write(static_cast<std::uint32_t>(name.size()));
                    file.write(name.data(), static_cast<std::streamsize>(name.size()));
                });
}

void AddFile()
{
    constexpr double kGoal = 0.4;
    static const bench_folder_t folder;
    static const std::vector<file_record_t> records = FileRecords(kFileRecords);
    const auto device = boost::make_shared<file_dev_t>(folder / "ours");
    const auto stream = std::make_shared<io::buffered_bin_stream_tt>(boost::shared_ptr<io::io_dev_t>(device));
    const auto file = std::make_shared<std::ofstream>(folder / "ofstream", std::ios::binary);
    figure_t("20,000 records to a file")
        .Ours(
            [device, stream]
            {
                for (const file_record_t& record : records)
                    WriteToStream(*stream, record);
                stream->Flush();
                device->Rewind();
                return 0;
            })
        .Against("std::ofstream", kGoal,
                 [file]
                 {
                     for (const file_record_t& record : records)
                         WriteToFile(*file, record);
                     file->flush().seekp(0);
                     return 0;
                 });
}

} // namespace

void AddFigures()
{
    AddWrite();
    AddRead();
    AddGrowth();
    AddFile();
}
