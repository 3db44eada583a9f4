#pragma once

#include <boost/shared_ptr.hpp>

#include "nelvo/core/cnt/array.h"

namespace crypto
{

// Key bytes: an array that overwrites its memory with zeros before it gives it back, as a key shares it.
using secure_array_t = cnt::secure_array_t;
using secure_array_ptr_t = boost::shared_ptr<secure_array_t>;

} // namespace crypto
