#include "nelvo/fs/posix_file_security.h"

#include <cstring>
#include <utility>

#include <boost/make_shared.hpp>

#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/format.h"
#include "nelvo/io/binary_value.h"
#include "nelvo/io/mem_stream.h"
#include "nelvo/posix/posix_file.h"

namespace posix
{

namespace
{

constexpr char kHeader[] = {'N', 'I', 'X'};
constexpr std::size_t kUidOffset = 3;
constexpr std::size_t kGidOffset = 11;
constexpr std::size_t kModeOffset = 19;
constexpr std::size_t kSize = 27;

void CheckBuffer(const cnt::plain_array_t& buffer)
{
    if (buffer.size() != kSize)
        throw exc::runtime_exc_t("Invalid security buffer size: %1 != %2", buffer.size(), kSize);
    if (std::memcmp(buffer.data(), kHeader, sizeof(kHeader)) != 0)
        throw exc::runtime_exc_t("Invalid security buffer data, header: %1 %2 %3.", buffer[0], buffer[1],
                                 buffer[2]);
}

// The lower half of a field, which comes first.
std::uint32_t FieldAt(const cnt::plain_array_t& buffer, std::size_t offset)
{
    std::uint32_t value = 0;
    std::memcpy(&value, buffer.data() + offset, sizeof(value));
    return value;
}

} // namespace

posix_file_security_ptr_t posix_file_security::ReadFromFile(const std::string& path)
try
{
    auto security = boost::make_shared<posix_file_security>();
    security->uid = posix_file_t::GetOwnerUid(path.c_str());
    security->gid = posix_file_t::GetOwnerGid(path.c_str());
    security->mode = posix_file_t::GetPermissions(path.c_str());
    return security;
}
catch (std::exception& e)
{
    exc::RethrowWithContext(
        false, util::Format("posix_file_security failed to get file security, path: %1", path), e);
}

void posix_file_security::ApplyToFile(const std::string& path) const
try
{
    posix_file_t::SetPermissions(path.c_str(), mode);
    posix_file_t::SetOwner(path.c_str(), uid, gid);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(
        false, util::Format("posix_file_security failed to apply security for file: %1.", path), e);
}

void posix_file_security::Serialize(cnt::plain_array_t& buffer) const
try
{
    io::plain_mem_stream_t stream(boost::make_shared<cnt::plain_array_t>(kSize));
    for (const char letter : kHeader)
        io::WriteValue(stream, letter);
    io::WriteValue(stream, std::uint64_t{uid});
    io::WriteValue(stream, std::uint64_t{gid});
    io::WriteValue(stream, std::uint64_t{mode});
    buffer = std::move(*stream.GetArray());
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "posix_file_security failed to serialize.", e);
}

posix_file_security_ptr_t posix_file_security::Deserialize(const cnt::plain_array_t& buffer)
try
{
    CheckBuffer(buffer);
    auto security = boost::make_shared<posix_file_security>();
    security->uid = FieldAt(buffer, kUidOffset);
    security->gid = FieldAt(buffer, kGidOffset);
    security->mode = FieldAt(buffer, kModeOffset);
    return security;
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "posix_file_security failed to deserialize.", e);
}

} // namespace posix
