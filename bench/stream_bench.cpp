// What do records cost on their way into memory and back, and through the buffered device into a file?

#include "nelvo/fs/file_info.h"
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
#include "bench/support/growth_figure.h"
#include "bench/support/record_peers.h"

namespace
{

constexpr std::size_t kRecords = 100000;
constexpr std::size_t kFewRecords = 1000;
constexpr std::size_t kFileRecords = 20000;
constexpr std::uint32_t kAclMagic = 0x646C6361;

datetime::CDateTime DateOf(const file_date_t& date) { return {date.seconds, date.is_utc}; }

// The same record as the library has it.
util::FileInfo InfoOf(const file_record_t& record)
{
    util::FileInfo info;
    info.type = record.type;
    info.link_count = record.link_count;
    info.name = record.name;
    info.size = record.size;
    if (record.attributes.has_value())
        info.meta.attributes = CFileAttributes(*record.attributes);
    info.meta.changed = DateOf(record.changed);
    info.meta.modified = DateOf(record.modified);
    info.meta.accessed = DateOf(record.accessed);
    info.meta.uid = record.uid;
    info.meta.gid = record.gid;
    info.meta.mode = record.mode;
    info.meta.acl = {record.acl.access, record.acl.fallback};
    info.extra_data.assign(record.extra_data.data(), record.extra_data.size());
    return info;
}

std::vector<util::FileInfo> FileInfos(std::size_t count)
{
    std::vector<util::FileInfo> infos;
    infos.reserve(count);
    for (const file_record_t& record : FileRecords(count))
        infos.push_back(InfoOf(record));
    return infos;
}

boost::shared_ptr<cnt::plain_array_t> WriteRecords(const std::vector<util::FileInfo>& infos)
{
    io::plain_mem_stream_t stream;
    for (const util::FileInfo& info : infos)
        util::SerializeFileInfo(info, stream);
    return stream.GetArray();
}

std::uint64_t ReadRecords(const boost::shared_ptr<cnt::plain_array_t>& bytes, std::size_t count)
{
    io::plain_mem_stream_t stream(bytes);
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i != count; ++i)
        sum += util::FileInfo(stream).size.value();
    return sum;
}

const std::vector<util::FileInfo>& Infos()
{
    static const std::vector<util::FileInfo> infos = FileInfos(kRecords);
    return infos;
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
    figure_t("100,000 file info records to memory")
        .Ours([] { return WriteRecords(Infos()); })
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
    figure_t("100,000 file info records from memory")
        .Ours([bytes = WriteRecords(Infos())] { return ReadRecords(bytes, kRecords); })
        .Against("Boost.Serialization", kGoal, ReadWork(BoostSerialization(Records())))
        .Against("cereal", kGoal, ReadWork(Cereal(Records())))
        .Against("protobuf", ReadWork(Protobuf(Records())));
}

void AddGrowth()
{
    AddGrowthFigure("file info records to memory", kFewRecords,
                    [](std::size_t count)
                    { return [infos = FileInfos(count)] { return WriteRecords(infos); }; });
    AddGrowthFigure("file info records from memory", kFewRecords,
                    [](std::size_t count) {
                        return [count, bytes = WriteRecords(FileInfos(count))]
                        { return ReadRecords(bytes, count); };
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

// The bytes that SerializeFileInfo writes, by hand.
class by_hand_t
{
public:
    explicit by_hand_t(std::ofstream& file) : m_file(file) {}

    void Write(const file_record_t& record)
    {
        Optional(record.type);
        Optional(record.link_count);
        OptionalBytes(record.name);
        Optional(record.size);
        Optional(record.attributes);
        for (const file_date_t& date : {record.changed, record.modified, record.accessed})
        {
            Value(std::uint32_t{date.is_utc});
            Value(date.seconds);
        }
        Optional(record.uid);
        Optional(record.gid);
        Optional(record.mode);
        Value(kAclMagic);
        OptionalBytes(record.acl.access);
        OptionalBytes(record.acl.fallback);
        Bytes(record.extra_data);
    }

private:
    template <class T>
    void Value(T value)
    {
        m_file.write(reinterpret_cast<const char*>(&value), sizeof(value));
    }

    template <class T>
    void Optional(const std::optional<T>& value)
    {
        Value(std::uint32_t{value.has_value()});
        if (value.has_value())
            Value(*value);
    }

    template <class T>
    void Bytes(const T& bytes)
    {
        Value(static_cast<std::uint32_t>(bytes.size()));
        m_file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

    void OptionalBytes(const std::optional<std::string>& bytes)
    {
        Value(std::uint32_t{bytes.has_value()});
        if (bytes.has_value())
            Bytes(*bytes);
    }

    std::ofstream& m_file;
};

// Both ways write the same bytes over the same file, again and again.
void AddFile()
{
    constexpr double kGoal = 0.4;
    static const bench_folder_t folder;
    static const std::vector<file_record_t> records = FileRecords(kFileRecords);
    static const std::vector<util::FileInfo> infos = FileInfos(kFileRecords);
    const auto device = boost::make_shared<file_dev_t>(folder / "ours");
    const auto stream = std::make_shared<io::buffered_bin_stream_tt>(boost::shared_ptr<io::io_dev_t>(device));
    const auto file = std::make_shared<std::ofstream>(folder / "ofstream", std::ios::binary);
    figure_t("20,000 file info records to a file")
        .Ours(
            [device, stream]
            {
                for (const util::FileInfo& info : infos)
                    util::SerializeFileInfo(info, *stream);
                stream->Flush();
                device->Rewind();
                return 0;
            })
        .Against("std::ofstream", kGoal,
                 [file]
                 {
                     by_hand_t by_hand(*file);
                     for (const file_record_t& record : records)
                         by_hand.Write(record);
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
