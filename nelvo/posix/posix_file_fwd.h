#pragma once

// The shared handle of an open file, for headers that only pass it on, and the numbers of files.

#include <cstdint>

#include <boost/shared_ptr.hpp>

namespace posix
{
class posix_file_t;
}

// The handle owns the object, and the object the descriptor.
using posix_file_ptr_t = boost::shared_ptr<posix::posix_file_t>;

// In bytes.
using stream_size_t = std::int64_t;
using stream_pos_t = std::int64_t;
