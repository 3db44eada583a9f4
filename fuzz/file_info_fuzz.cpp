// Stored records of files.

#include "nelvo/fs/file_info.h"

#include "fuzz/stream.h"

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    util::FileInfo info;
    TryStored(info, Array(data, size), IntoAnother(util::DeserializeFileInfo), util::SerializeFileInfo);
}
