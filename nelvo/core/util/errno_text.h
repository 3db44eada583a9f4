#pragma once

// Texts of system errors.

#include <string>

namespace util
{

// The system's text for an errno value, as strerror_r(3) gives it ("No such file or directory"), or
// "POSIX error: " and the number in decimal if it gives none. Throws nothing but std::bad_alloc.
std::string ErrnoText(int error);

} // namespace util
