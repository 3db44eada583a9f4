// Stored records of files.

#include "nelvo/fs/file_info.h"

#include <utility>

#include "fuzz/stream.h"

namespace
{

// What fails leaves the fields that came before it, so it is done to another record.
void Read(util::FileInfo& info, io::io_dev_t& stream)
{
    util::FileInfo read;
    util::DeserializeFileInfo(read, stream);
    info = std::move(read);
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    util::FileInfo info;
    TryStored(info, Array(data, size), Read, util::SerializeFileInfo);
}
