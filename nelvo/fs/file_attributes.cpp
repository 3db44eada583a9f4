#include "nelvo/fs/file_attributes.h"

#include "nelvo/core/exc/rethrow.h"
#include "nelvo/io/binary_value.h"

void CFileAttributes::Serialize(io::io_dev_t& stream) const
try
{
    io::WriteValue(stream, m_attributes);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "CFileAttributes::Serialize: Can't serialize data.", e);
}

void CFileAttributes::DeSerialize(io::io_dev_t& stream)
try
{
    m_attributes = io::ReadValue<std::uint32_t>(stream);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "CFileAttributes::DeSerialize: Can't deserialize data.", e);
}

CFileAttributes CFileAttributes::FromStream(io::io_dev_t& stream)
{
    CFileAttributes attributes;
    attributes.DeSerialize(stream);
    return attributes;
}
