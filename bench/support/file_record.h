#pragma once

// What is known of a file, as util::FileInfo keeps it, in types of the standard library: what other libraries
// are given to write.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct file_date_t
{
    bool is_utc = true;
    std::int64_t seconds = 0;
};

struct file_acl_t
{
    std::optional<std::string> access;
    std::optional<std::string> fallback;
};

struct file_record_t
{
    std::optional<std::uint32_t> type;
    std::optional<std::uint32_t> link_count;
    std::optional<std::string> name;
    std::optional<std::uint64_t> size;
    std::optional<std::uint32_t> attributes;
    file_date_t changed;
    file_date_t modified;
    file_date_t accessed;
    std::optional<std::uint64_t> uid;
    std::optional<std::uint64_t> gid;
    std::optional<std::uint32_t> mode;
    file_acl_t acl;
    std::vector<char> extra_data;
};

// The records of files of a plain file system: no ACL, no attributes, no extra data.
inline std::vector<file_record_t> FileRecords(std::size_t count)
{
    std::vector<file_record_t> records(count);
    for (std::size_t i = 0; i != count; ++i)
    {
        file_record_t& record = records[i];
        const auto seconds = static_cast<std::int64_t>(1700000000 + i);
        record.type = 0;
        record.link_count = 1;
        record.name = "part-" + std::to_string(i) + ".bin";
        record.size = 4096 * i;
        record.changed.seconds = seconds;
        record.modified.seconds = seconds;
        record.accessed.seconds = seconds + 1;
        record.uid = 1000;
        record.gid = 1000;
        record.mode = 644;
    }
    return records;
}
