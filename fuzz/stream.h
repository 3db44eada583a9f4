#pragma once

// Streams of the fuzz targets that read stored records.

#include <cstddef>
#include <cstdint>

#include <boost/make_shared.hpp>

#include "nelvo/io/mem_stream.h"

namespace fuzz
{

// A shared array of the bytes.
inline boost::shared_ptr<cnt::plain_array_t> Array(const std::uint8_t* data, std::size_t size)
{
    return boost::make_shared<cnt::plain_array_t>(reinterpret_cast<const char*>(data), size);
}

} // namespace fuzz
