#pragma once

// An open file: the one wrapper around a descriptor. Every file of the library comes from a factory here, so
// its path has passed security::CheckPathAccess before it is opened; what that throws leaves it unopened.
//
//   const posix_file_ptr_t file = posix::posix_file_t::CreateOrOpen("/var/log/x.log");
//   file->SeekFromEnd(0);
//   file->WriteText("a line\n");
//
// A failure is a posix::errno_exc_t whose message names the file, unless another is named below. A wide path
// without a UTF-8 form throws exc::runtime_exc_t before anything is done (util::WideToUtf8). A path ends at
// its first zero byte, for the access check as for the system. Nothing is buffered, nothing is retried but a
// read or write that a signal interrupted, and nothing is logged but by CreateWithPrealloc. Each call of
// read(2) and write(2) is counted (workload::ReadCounters, workload::WriteCounters). Child processes inherit
// the descriptor (no O_CLOEXEC). One object serves one thread at a time.

#include <ctime>
#include <string>

#include <sys/types.h>

#include "nelvo/core/util/str.h"
#include "nelvo/posix/posix_file_fwd.h"

namespace posix
{

class posix_file_t
{
public:
    // For reading and writing. A missing file is created with mode 0666, less the umask; an existing one
    // keeps its content. The flag is never read, here and in OpenRead.
    // Kept: PosixFile.CreateOrOpenAndOpenReadNeverReadTheirFlag
    static posix_file_ptr_t CreateOrOpen(const util::str_t& path, bool ignored_flag = false);

    // CreateOrOpen; then, unless the size is 0, asks the file system for room, or else makes that the file's
    // size, which cuts a longer file. How that went is logged on the default channel; it never makes opening
    // fail. If all ways fail, "Preallocating [<size>] bytes for the file [<path>]. Failed." stands in the log
    // before the warning with the reason.
    // Kept: PosixFile.PreallocationCutsALongerFile
    static posix_file_ptr_t CreateWithPrealloc(const util::str_t& path, stream_size_t prealloc_size);

    // An existing file. Sync is O_SYNC. WithoutCache is O_SYNC too, with O_DIRECT for reading and writing,
    // where length, position and memory must be aligned, but without it for reading alone.
    // Kept: PosixFileCalls.OnlyTheWritableFormWithoutCacheBypassesTheCache
    static posix_file_ptr_t OpenRead(const util::str_t& path, bool ignored_flag = false);
    static posix_file_ptr_t OpenReadWrite(const util::str_t& path);
    static posix_file_ptr_t OpenByAccess(const util::str_t& path, bool read_only);
    static posix_file_ptr_t OpenReadWriteSync(const util::str_t& path);
    static posix_file_ptr_t OpenReadWithoutCache(const util::str_t& path);
    static posix_file_ptr_t OpenReadWriteWithoutCache(const util::str_t& path);

    // Not to be had on this platform: each throws exc::runtime_exc_t at once and does nothing else.
    static posix_file_ptr_t CreateNewWithoutCache(const util::str_t& path, stream_size_t prealloc_size);
    static posix_file_ptr_t SparseFileCreate(const util::str_t& path, stream_size_t zeroesSize);
    static void SparseFileSetZeroData(const posix_file_ptr_t& handle, stream_pos_t offset,
                                      stream_size_t length);

    // Closes an open file and ignores how that went. Descriptor 0 counts as nothing open and stays open.
    // Kept: PosixFile.DestructorLeavesDescriptorZeroOpen
    ~posix_file_t();
    posix_file_t(const posix_file_t&) = delete;
    posix_file_t& operator=(const posix_file_t&) = delete;

    // Writes all of it, in as many calls as it takes. A length below 1 is nothing to do. A write that takes
    // nothing and reports no error is tried again without end.
    // Kept: PosixFileCalls.WriteThatTakesNothingIsTriedAgain
    void WriteBytes(stream_size_t length, const void* data);

    // WriteBytes in pieces of 1024 bytes and a rest.
    void WriteText(const std::string& text);

    // Reads on until the buffer is full or the file ends, and returns how many bytes it read; a short count
    // is the only sign of the end. A failure after some bytes throws all the same; the position has moved
    // behind them, and nobody says how many they were. A length below 1 is nothing to do.
    // Kept: PosixFileCalls.ReadThatFailsAfterSomeBytesThrows
    stream_size_t ReadBytes(void* buffer, stream_size_t length);

    // Makes the text all that stands between the position and the end, and returns its length.
    stream_size_t ReadAllText(std::string& text);

    // In bytes. Bytes that are added are zero; the position stays, beyond the end too.
    void set_size(stream_size_t new_size);
    stream_size_t GetSize() const;

    // Calls fsync(2), so the data is on the disk afterwards, unless the program defines an fsync of its own:
    // the tool does, and nothing happens there. The library brings none. A program that wants the tool's
    // behaviour compiles tool/libc_overrides.cpp into its executable.
    void Flush();

    // Returns the result of close(2). The file counts as closed even if that fails, and whatever is done with
    // it afterwards fails with EBADF.
    int Close();

    // The methods are SEEK_SET, SEEK_CUR and SEEK_END. All return the new position.
    stream_pos_t Seek(stream_pos_t distance, int method);
    stream_pos_t SeekFromBegin(stream_pos_t position);
    stream_pos_t SeekFromCurrent(stream_pos_t distance);
    stream_pos_t SeekFromEnd(stream_pos_t distance);
    stream_pos_t GetPosition() const;

    // "SEEK_SET", "SEEK_CUR", "SEEK_END"; the number in decimal for any other method.
    static std::string SeekMethodName(int method);

    // -1 after Close. The object keeps it.
    int GetDescriptor() const { return m_descriptor; }

    // As it was given to the factory.
    const util::str_t& GetPath() const { return m_path; }

    // The rest needs no open file, asks no access check and takes the path as it is. Links are followed but
    // where it says otherwise.
    static uid_t GetOwnerUid(const char* path);
    static gid_t GetOwnerGid(const char* path);

    // The mode's lowest 12 bits.
    static mode_t GetPermissions(const char* path);
    static void SetPermissions(const char* path, mode_t mode);

    // Of the link itself. Failures say "stat64" and "chown", although the calls are lstat64 and lchown.
    // Kept: PosixFile.FailuresOfLinkCallsNameTheCallsThatFollowLinks
    static void GetLinkOwner(const char* path, bool& is_link, uid_t& uid, gid_t& gid);
    static bool IsSymlink(const char* path);
    static int SetOwner(const char* path, uid_t uid, gid_t gid);

    // In whole seconds. A null result is passed over.
    static void GetFileTimes(const util::str_t& path, std::time_t* access_time,
                             std::time_t* modification_time);
    static void SetFileTimes(const util::str_t& path, std::time_t access_time, std::time_t modification_time);

    // The link's target in the form of the path. Throws exc::runtime_exc_t for one of 32768 bytes or more.
    static util::str_t ReadSymlink(const util::str_t& path);
    static std::string ReadSymlink(const std::string& path);
    static std::string ReadSymlink(const char* path);
    static std::wstring ReadSymlink(const std::wstring& path);
    static std::wstring ReadSymlink(const wchar_t* path);

private:
    explicit posix_file_t(const util::str_t& path) : m_path(path) {}
    static posix_file_ptr_t Open(const util::str_t& path, int flags, const char* failure);

    int m_descriptor = -1;
    util::str_t m_path;
};

} // namespace posix
