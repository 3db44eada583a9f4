#pragma once

// The flags that the file system keeps in a file's inode: IMMUTABLE, and NOCOW of a copy-on-write one.
//
// The forms with a path open the file for reading, which an immutable one allows too.

#include <cstdint>

#include "nelvo/posix/posix_file_fwd.h"

namespace util
{

class str_t;

// Takes the flags of clear away and adds those of set, the others stay: the result of the last ioctl(2).
// Throws posix::errno_exc_t with "POSIX: Failed to get file flags. File: [<path>]." or "POSIX: Failed to set
// file flags. File: [<path>]."
int ChangeFileFlags(const posix_file_ptr_t& file, std::uint32_t set, std::uint32_t clear);

// Throw what opening and ChangeFileFlags throw.
void SetImmutable(const posix_file_ptr_t& file, bool on);
void SetImmutable(const str_t& path, bool on);
void SetNoCow(const posix_file_ptr_t& file, bool on);
void SetNoCow(const str_t& path, bool on);

// The same, but a std::exception ends as a warning on the default log: "Unable to set IMMUTABLE file
// attribute" or "Unable to remove IMMUTABLE file attribute", with NOCOW for the other flag, and the
// exception. A wide path without a UTF-8 form still throws exc::runtime_exc_t: it becomes a str_t before the
// call begins.
void TrySetImmutable(const posix_file_ptr_t& file, bool on);
void TrySetImmutable(const str_t& path, bool on);
void TrySetNoCow(const posix_file_ptr_t& file, bool on);
void TrySetNoCow(const str_t& path, bool on);

} // namespace util
