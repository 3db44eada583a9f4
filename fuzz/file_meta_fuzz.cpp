// Stored metadata of files.

#include "nelvo/fs/file_meta.h"

#include <utility>

#include "fuzz/stream.h"

namespace
{

// What fails leaves the fields that came before it, so it is done to another record.
void Read(util::FileMeta& meta, io::io_dev_t& stream)
{
    util::FileMeta read;
    util::DeserializeFileMeta(read, stream);
    meta = std::move(read);
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    util::FileMeta meta;
    TryStored(meta, Array(data, size), Read, util::SerializeFileMeta);
}
