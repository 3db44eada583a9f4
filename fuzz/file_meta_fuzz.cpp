// Stored metadata of files.

#include "nelvo/fs/file_meta.h"

#include "fuzz/stream.h"

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    util::FileMeta meta;
    TryStored(meta, Array(data, size), IntoAnother(util::DeserializeFileMeta), util::SerializeFileMeta);
}
