#pragma once

// A stream forwards to the device under it. What is written with binary_value.h through a stream reaches that
// device value by value. A stream owns nothing but its share of the device, and is not copied.

#include <utility>

#include <boost/shared_ptr.hpp>

#include "nelvo/io/io_dev.h"

namespace io
{

template <class Redirector>
class basic_binary_stream_tt : public Redirector
{
public:
    using Redirector::Redirector;
};

class binary_stream_tt : public basic_binary_stream_tt<io_dev_redirector_t>
{
public:
    // The device must not be null by the time of the first read or write.
    explicit binary_stream_tt(boost::shared_ptr<io_dev_t> device)
        : basic_binary_stream_tt(device), m_device(std::move(device))
    {
    }
    binary_stream_tt(const binary_stream_tt&) = delete;
    binary_stream_tt& operator=(const binary_stream_tt&) = delete;

protected:
    // A second share of the device, for derived streams, which ask it for what its kind has besides.
    boost::shared_ptr<io_dev_t> m_device;
};

} // namespace io
