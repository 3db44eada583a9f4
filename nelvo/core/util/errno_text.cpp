#include "nelvo/core/util/errno_text.h"

#include <cstring>

namespace util
{

std::string ErrnoText(int error)
{
    // GNU strerror_r returns the text, which need not stand in the buffer.
    char buffer[256] = {};
    const char* const text = ::strerror_r(error, buffer, sizeof(buffer));
    return text != nullptr ? std::string(text) : "POSIX error: " + std::to_string(error);
}

} // namespace util
