#pragma once

// Owner and permissions of a file as 27 bytes (posix::posix_file_security), for callers to whom a file
// without them is still good: what fails is a warning on the default channel, with the failure below it, and
// no std::exception leaves. Both ask security::CheckPathAccess first; a refusal is such a failure. A path
// ends at its first zero byte.

#include <string>

#include "nelvo/core/cnt/array.h"

namespace util
{

// Replaces what the buffer holds; it is empty after a failure. Warning: "Failed to get file security:
// <path>".
void GetFileSecurity(const std::string& path, cnt::plain_array_t& buffer);

// A failure may leave the permissions changed and the owner not. Warning: "Failed to set file security:
// <path>".
void SetFileSecurity(const std::string& path, const cnt::plain_array_t& buffer);

} // namespace util
