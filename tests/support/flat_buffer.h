#pragma once

// Bytes of a test as arrays for the flat reader and writer.

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
