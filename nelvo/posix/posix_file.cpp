#include "nelvo/posix/posix_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include "nelvo/context/path_access.h"
#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/to_text.h"
#include "nelvo/logging/channels.h"
#include "nelvo/logging/progress_scope.h"
#include "nelvo/monitoring/thread_counters.h"

namespace posix
{

namespace
{

constexpr mode_t kCreationMode = 0666;
constexpr mode_t kPermissionBits = 07777;
constexpr std::size_t kTextPiece = 1024;
constexpr std::size_t kFirstLinkBuffer = 256;
constexpr std::size_t kLastLinkBuffer = 32768;

constexpr const char* kCreateFailure = "POSIX: Failed to create or open file [%1].";
constexpr const char* kReadFailure = "POSIX: Failed to open file [%1].";
constexpr const char* kReadWriteFailure = "POSIX: Failed to open file [%1] for read/write access.";

stream_pos_t SeekOrThrow(int descriptor, const util::str_t& path, stream_pos_t distance, int method)
{
    const stream_pos_t position = ::lseek64(descriptor, distance, method);
    if (position != -1)
        return position;
    const int error = errno;
    throw errno_exc_t(
        "POSIX: Seek operation has failed. File: [%1]. Distance to move: [%2]. Move method: [%3].",
        path.narrow(), distance, posix_file_t::SeekMethodName(method), error);
}

// The call is stat64 or lstat64.
struct stat64 StatOrThrow(int (*call)(const char*, struct stat64*), const char* path)
{
    struct stat64 info = {};
    if (call(path, &info) != -1)
        return info;
    const int error = errno;
    throw errno_exc_t("stat64(%1) has failed.", path, error);
}

// The two requests and the flags are numbers that some file system knows; the common ones refuse both
// requests.
constexpr unsigned long kFirstPreallocRequest = 0xBBD;
constexpr unsigned long kSecondPreallocRequest = 0xBBC;
constexpr std::uint64_t kRoomFlags = 0x2400;

struct room_t
{
    std::uint64_t size;
    std::uint64_t flags;
};

// The message names no path.
// Kept: PosixFilePreallocation.FailureOfAllThreeWaysIsAWarningAndTheFileIsOpen
void AskForRoom(int descriptor, stream_size_t size)
{
    room_t room = {static_cast<std::uint64_t>(size), kRoomFlags};
    if (::ioctl(descriptor, kFirstPreallocRequest, &room) >= 0 ||
        ::ioctl(descriptor, kSecondPreallocRequest, &room) >= 0)
        return;
    if (::ftruncate64(descriptor, size) != -1)
        return;
    const int error = errno;
    throw errno_exc_t("ftruncate64() has failed.", error);
}

void Preallocate(const std::string& path, int descriptor, stream_size_t size)
{
    std::string bytes;
    try
    {
        bytes = util::GroupedText(size);
        quiet_progress_scope_t scope(logging::channels::default_log,
                                     "Preallocating [%2] bytes for the file [%1].", path, bytes);
        AskForRoom(descriptor, size);
        scope.close_with("[%2] bytes were preallocated for the file [%1].", path, bytes);
    }
    catch (std::exception& e)
    {
        logging::channels::default_log.warning_exc(e, "Unable to preallocate [%2] bytes for the file [%1].",
                                                   path, bytes);
    }
}

} // namespace

posix_file_ptr_t posix_file_t::CreateOrOpen(const util::str_t& path, bool)
{
    return Open(path, O_RDWR | O_CREAT, kCreateFailure);
}

posix_file_ptr_t posix_file_t::CreateWithPrealloc(const util::str_t& path, stream_size_t prealloc_size)
{
    posix_file_ptr_t file = CreateOrOpen(path);
    if (prealloc_size != 0)
        Preallocate(path.narrow(), file->m_descriptor, prealloc_size);
    return file;
}

posix_file_ptr_t posix_file_t::OpenRead(const util::str_t& path, bool)
{
    return Open(path, O_RDONLY, kReadFailure);
}

posix_file_ptr_t posix_file_t::OpenReadWrite(const util::str_t& path)
{
    return Open(path, O_RDWR, kReadWriteFailure);
}

posix_file_ptr_t posix_file_t::OpenByAccess(const util::str_t& path, bool read_only)
{
    return read_only ? OpenRead(path) : OpenReadWrite(path);
}

posix_file_ptr_t posix_file_t::OpenReadWriteSync(const util::str_t& path)
{
    return Open(path, O_RDWR | O_SYNC, kReadWriteFailure);
}

posix_file_ptr_t posix_file_t::OpenReadWithoutCache(const util::str_t& path)
{
    return Open(path, O_RDONLY | O_SYNC, kReadFailure);
}

posix_file_ptr_t posix_file_t::OpenReadWriteWithoutCache(const util::str_t& path)
{
    return Open(path, O_RDWR | O_SYNC | O_DIRECT, kReadWriteFailure);
}

posix_file_ptr_t posix_file_t::CreateNewWithoutCache(const util::str_t&, stream_size_t)
{
    throw exc::runtime_exc_t(
        "[unimplemented] posix_file_ptr_t posix_file_t::CreateNewWithoutCache( const util::str_t& path, stream_size_t prealloc_size )");
}

posix_file_ptr_t posix_file_t::SparseFileCreate(const util::str_t&, stream_size_t)
{
    throw exc::runtime_exc_t(
        "[unimplemented] posix_file_ptr_t posix_file_t::SparseFileCreate( const util::str_t& path, stream_size_t zeroesSize )");
}

void posix_file_t::SparseFileSetZeroData(const posix_file_ptr_t&, stream_pos_t, stream_size_t)
{
    throw exc::runtime_exc_t(
        "[unimplemented] void posix_file_t::SparseFileSetZeroData( posix_file_ptr_t handle, stream_pos_t offset, stream_size_t length )");
}

// The object is made before its descriptor, so that none is lost when memory runs out.
posix_file_ptr_t posix_file_t::Open(const util::str_t& path, int flags, const char* failure)
{
    security::CheckPathAccess(path.narrow().c_str());
    posix_file_ptr_t file(new posix_file_t(path));
    file->m_descriptor = ::open64(path.narrow().c_str(), flags, kCreationMode);
    const int error = errno;
    if (file->m_descriptor == -1)
        throw errno_exc_t(failure, path.narrow(), error);
    return file;
}

posix_file_t::~posix_file_t()
{
    if (m_descriptor != 0 && m_descriptor != -1)
        ::close(m_descriptor);
}

void posix_file_t::WriteBytes(stream_size_t length, const void* data)
{
    const char* next = static_cast<const char*>(data);
    while (length > 0)
    {
        workload::WriteCounters().Start();
        const ssize_t written = ::write(m_descriptor, next, static_cast<std::size_t>(length));
        const int error = errno;
        workload::WriteCounters().Stop(written);
        if (written != -1)
        {
            next += written;
            length -= written;
        }
        else if (error != EINTR)
            throw errno_exc_t("POSIX: Failed to write data to the file [%1].", m_path.narrow(), error);
    }
}

// The text is asked for its length again before each piece.
void posix_file_t::WriteText(const std::string& text)
{
    for (std::size_t done = 0; done < text.size(); done += kTextPiece)
    {
        const std::size_t piece = std::min(kTextPiece, text.size() - done);
        WriteBytes(static_cast<stream_size_t>(piece), text.data() + done);
    }
}

stream_size_t posix_file_t::ReadBytes(void* buffer, stream_size_t length)
{
    char* const first = static_cast<char*>(buffer);
    stream_size_t total = 0;
    while (total < length)
    {
        workload::ReadCounters().Start();
        const ssize_t count = ::read(m_descriptor, first + total, static_cast<std::size_t>(length - total));
        const int error = errno;
        workload::ReadCounters().Stop(count);
        if (count == 0)
            break;
        if (count != -1)
            total += count;
        else if (error != EINTR)
            throw errno_exc_t("POSIX: Failed to read data from the file [%1].", m_path.narrow(), error);
    }
    return total;
}

stream_size_t posix_file_t::ReadAllText(std::string& text)
{
    text.clear();
    for (;;)
    {
        std::array<char, kTextPiece> piece = {};
        const stream_size_t count = ReadBytes(piece.data(), static_cast<stream_size_t>(piece.size()));
        if (count == 0)
            return static_cast<stream_size_t>(text.size());
        text.append(piece.data(), static_cast<std::size_t>(count));
    }
}

// The message ends without a full stop.
// Kept: PosixFile.SetSizeFailureNamesTheSizeAndHasNoFullStop
void posix_file_t::set_size(stream_size_t new_size)
{
    if (::ftruncate64(m_descriptor, new_size) != -1)
        return;
    const int error = errno;
    throw errno_exc_t("set_size failed. File: [%1]. New size: [%2]", m_path.narrow(), new_size, error);
}

stream_size_t posix_file_t::GetSize() const
{
    struct stat64 info = {};
    if (::fstat64(m_descriptor, &info) != -1)
        return info.st_size;
    const int error = errno;
    throw errno_exc_t("fstat64(%1) has failed.", m_path.narrow(), error);
}

void posix_file_t::Flush()
{
    if (::fsync(m_descriptor) == 0)
        return;
    const int error = errno;
    throw errno_exc_t("POSIX: Failed to flush file buffers. File: [%1].", m_path.narrow(), error);
}

int posix_file_t::Close()
{
    const int result = ::close(std::exchange(m_descriptor, -1));
    const int error = errno;
    if (result == -1)
        throw errno_exc_t("POSIX: Failed to close file. File: [%1].", m_path.narrow(), error);
    return result;
}

stream_pos_t posix_file_t::Seek(stream_pos_t distance, int method)
{
    return SeekOrThrow(m_descriptor, m_path, distance, method);
}

stream_pos_t posix_file_t::SeekFromBegin(stream_pos_t position) { return Seek(position, SEEK_SET); }

stream_pos_t posix_file_t::SeekFromCurrent(stream_pos_t distance) { return Seek(distance, SEEK_CUR); }

stream_pos_t posix_file_t::SeekFromEnd(stream_pos_t distance) { return Seek(distance, SEEK_END); }

stream_pos_t posix_file_t::GetPosition() const { return SeekOrThrow(m_descriptor, m_path, 0, SEEK_CUR); }

std::string posix_file_t::SeekMethodName(int method)
{
    switch (method)
    {
    case SEEK_SET: return "SEEK_SET";
    case SEEK_CUR: return "SEEK_CUR";
    case SEEK_END: return "SEEK_END";
    default: return std::to_string(method);
    }
}

uid_t posix_file_t::GetOwnerUid(const char* path) { return StatOrThrow(::stat64, path).st_uid; }

gid_t posix_file_t::GetOwnerGid(const char* path) { return StatOrThrow(::stat64, path).st_gid; }

mode_t posix_file_t::GetPermissions(const char* path)
{
    return StatOrThrow(::stat64, path).st_mode & kPermissionBits;
}

void posix_file_t::SetPermissions(const char* path, mode_t mode)
{
    if (::chmod(path, mode) != -1)
        return;
    const int error = errno;
    throw errno_exc_t("chmod(%1) has failed.", path, error);
}

void posix_file_t::GetLinkOwner(const char* path, bool& is_link, uid_t& uid, gid_t& gid)
{
    const struct stat64 info = StatOrThrow(::lstat64, path);
    is_link = S_ISLNK(info.st_mode);
    uid = info.st_uid;
    gid = info.st_gid;
}

bool posix_file_t::IsSymlink(const char* path) { return S_ISLNK(StatOrThrow(::lstat64, path).st_mode); }

int posix_file_t::SetOwner(const char* path, uid_t uid, gid_t gid)
{
    const int result = ::lchown(path, uid, gid);
    const int error = errno;
    if (result == -1)
        throw errno_exc_t("chown(%1) has failed.", path, error);
    return result;
}

void posix_file_t::GetFileTimes(const util::str_t& path, std::time_t* access_time,
                                std::time_t* modification_time)
{
    const struct stat64 info = StatOrThrow(::stat64, path.narrow().c_str());
    if (access_time != nullptr)
        *access_time = info.st_atime;
    if (modification_time != nullptr)
        *modification_time = info.st_mtime;
}

// The message is glued around the path and ends without a full stop.
// Kept: PosixFile.SetFileTimesFailureIsGluedAroundThePath
void posix_file_t::SetFileTimes(const util::str_t& path, std::time_t access_time,
                                std::time_t modification_time)
{
    const timeval times[] = {{access_time, 0}, {modification_time, 0}};
    if (::utimes(path.narrow().c_str(), times) != -1)
        return;
    const int error = errno;
    throw errno_exc_t("Failed to set access time and modification time for item '" + path.narrow() + "'",
                      error);
}

util::str_t posix_file_t::ReadSymlink(const util::str_t& path) { return ReadSymlink(path.narrow()); }

std::string posix_file_t::ReadSymlink(const std::string& path)
{
    for (std::size_t size = kFirstLinkBuffer; size <= kLastLinkBuffer; size *= 2)
    {
        std::string target(size, '\0');
        const ssize_t length = ::readlink(path.c_str(), target.data(), size);
        const int error = errno;
        if (length == -1)
            throw errno_exc_t("readlink(%1) has failed.", path, error);
        // A target that fills the buffer may have been cut.
        if (static_cast<std::size_t>(length) < size)
        {
            target.resize(static_cast<std::size_t>(length));
            return target;
        }
    }
    throw exc::runtime_exc_t("Unable to get symbolic link target path. Link: [%1].", path);
}

std::string posix_file_t::ReadSymlink(const char* path) { return ReadSymlink(std::string(path)); }

std::wstring posix_file_t::ReadSymlink(const std::wstring& path)
{
    return ReadSymlink(util::str_t(path)).wide();
}

std::wstring posix_file_t::ReadSymlink(const wchar_t* path) { return ReadSymlink(std::wstring(path)); }

} // namespace posix
