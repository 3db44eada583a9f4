// Stored attributes of a file.

#include "nelvo/fs/file_attributes.h"

#include "fuzz/stream.h"

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    CFileAttributes attributes;
    Require(TryStored(attributes, Array(data, size)) == (size >= sizeof(attributes.GetAttributes())));
}
