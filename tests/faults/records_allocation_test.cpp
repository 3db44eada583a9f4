// The stored records of files, while memory runs out.

#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "nelvo/core/date_time.h"
#include "nelvo/fs/acl_data.h"
#include "nelvo/fs/file_attributes.h"
#include "nelvo/fs/file_info.h"
#include "nelvo/fs/posix_file_security.h"
#include "tests/faults/allocation_sweep.h"
#include "tests/support/flat_buffer.h"
#include "tests/support/golden.h"
#include "tests/support/record_stream.h"

namespace
{

// Reads the record of tests/data and writes it: what comes out is what went in.
template <class Record>
void SweepRecord(const std::string& golden, const std::function<void(Record&, io::io_dev_t&)>& read,
                 const std::function<void(const Record&, io::io_dev_t&)>& write)
{
    const std::string bytes = Golden(golden);
    const auto written = [&](const Record& record)
    { return Hex(Written([&](io::io_dev_t& stream) { write(record, stream); })); };

    record_stream_t stream(bytes);
    std::unique_ptr<Record> record = std::make_unique<Record>();
    SweepAllocations({[&] { read(*record, stream); },
                      [&]
                      {
                          std::string result = written(*record);
                          record = std::make_unique<Record>();
                          stream.GetMemDevice()->SeekAbsolute(0);
                          return result;
                      },
                      Hex(bytes)});

    record_stream_t source(bytes);
    read(*record, source);
    std::unique_ptr<record_stream_t> target = std::make_unique<record_stream_t>();
    SweepAllocations({[&] { write(*record, *target); },
                      [&]
                      {
                          std::string result = Hex(target->bytes());
                          target = std::make_unique<record_stream_t>();
                          return result;
                      },
                      Hex(bytes)});
}

template <class Record>
void SweepOwnRecord(const std::string& golden)
{
    SweepRecord<Record>(
        golden, [](Record& record, io::io_dev_t& stream) { record.DeSerialize(stream); },
        [](const Record& record, io::io_dev_t& stream) { record.Serialize(stream); });
}

} // namespace

TEST(RecordsWithoutMemory, AttributesAreReadAndWrittenOrThrow)
{
    SweepOwnRecord<CFileAttributes>("file_attributes");
}

TEST(RecordsWithoutMemory, DateIsReadAndWrittenOrThrows)
{
    SweepOwnRecord<datetime::CDateTime>("date_time_utc");
}

TEST(RecordsWithoutMemory, AclDataIsReadAndWrittenOrThrows)
{
    SweepRecord<util::AclData>("acl_data", util::DeserializeAcl, util::SerializeAcl);
}

TEST(RecordsWithoutMemory, FileMetaIsReadAndWrittenOrThrows)
{
    SweepRecord<util::FileMeta>("file_meta", util::DeserializeFileMeta, util::SerializeFileMeta);
}

TEST(RecordsWithoutMemory, FileInfoIsReadAndWrittenOrThrows)
{
    SweepRecord<util::FileInfo>("file_info", util::DeserializeFileInfo, util::SerializeFileInfo);
}

TEST(RecordsWithoutMemory, SecurityIsReadAndWrittenOrThrowsAndLeavesTheBuffer)
{
    const std::string bytes = Golden("posix_file_security");
    const cnt::plain_array_t golden(bytes.data(), bytes.size());
    cnt::plain_array_t buffer("before", 6);
    SweepAllocations({[&] { posix::posix_file_security::Deserialize(golden)->Serialize(buffer); },
                      [&]
                      {
                          std::string result = BytesOf(buffer);
                          buffer = cnt::plain_array_t("before", 6);
                          return result;
                      },
                      bytes, "before"});
}
