#include "nelvo/fs/file_security.h"

#include "nelvo/context/path_access.h"
#include "nelvo/core/util/str.h"
#include "nelvo/fs/posix_file_security.h"
#include "nelvo/logging/channels.h"

namespace util
{

void GetFileSecurity(const std::string& path, cnt::plain_array_t& buffer)
{
    buffer.resize(0);
    try
    {
        security::CheckPathAccess(path.c_str());
        posix::posix_file_security::ReadFromFile(path)->Serialize(buffer);
    }
    catch (const std::exception& e)
    {
        logging::channels::default_log.warning_exc(e, "Failed to get file security: %1", path);
    }
}

void SetFileSecurity(const std::string& path, const cnt::plain_array_t& buffer)
{
    try
    {
        security::CheckPathAccess(path.c_str());
        posix::posix_file_security::Deserialize(buffer)->ApplyToFile(path);
    }
    catch (const std::exception& e)
    {
        logging::channels::default_log.warning_exc(e, "Failed to set file security: %1", path);
    }
}

} // namespace util
