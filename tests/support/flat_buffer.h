#pragma once

// Bytes of a test as arrays for the flat reader and writer.

#include <cstdint>
#include <string>

#include <boost/make_shared.hpp>

#include "nelvo/core/cnt/array.h"
#include "nelvo/core/cnt/buf_writer.h"

inline boost::shared_ptr<cnt::plain_array_t> ArrayOf(const std::string& bytes)
{
    return boost::make_shared<cnt::plain_array_t>(bytes.data(), bytes.size());
}

template <class Array>
std::string BytesOf(const Array& array)
{
    return std::string(array.begin(), array.end());
}

// The bytes before the position.
inline std::string WrittenBy(const cnt::CBufWriter& writer)
{
    return std::string(writer.GetBuffer()->data(), writer.GetPosition());
}

// What a read of so many bytes says that the buffer has not.
inline std::string OutOfBuffer(std::uint64_t buffer, std::uint64_t size, std::uint64_t position)
{
    return "Out of the buffer, buffer size '" + std::to_string(buffer) + "', struct size '" +
           std::to_string(size) + "', buffer pointer '" + std::to_string(position) + "'.";
}
