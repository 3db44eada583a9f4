#pragma once

// Where bytes go and come from: the interface of all devices, and the device that forwards to another one.
// Binary streams (binary_stream.h) are devices too, so that they stack.
//
// A device has no lock and serves one thread at a time. It is held by a boost::shared_ptr.

#include <cstdint>
#include <utility>

#include <boost/shared_ptr.hpp>

namespace io
{

class io_dev_t
{
public:
    virtual ~io_dev_t() = default;

    // Takes bytes and returns how many it took: fewer than it was given if it cannot take them all. Other
    // failures are exceptions.
    virtual std::uint64_t write(const void* data, std::uint64_t count) = 0;

    // Delivers bytes and returns how many: fewer than it was asked for at the end of the data. Other failures
    // are exceptions.
    virtual std::uint64_t read(void* buffer, std::uint64_t count) = 0;
};

class io_dev_redirector_t : public io_dev_t
{
public:
    // The target must not be null by the time of the first read or write.
    explicit io_dev_redirector_t(boost::shared_ptr<io_dev_t> target) : m_target(std::move(target)) {}

    std::uint64_t write(const void* data, std::uint64_t count) override
    {
        return m_target->write(data, count);
    }
    std::uint64_t read(void* buffer, std::uint64_t count) override { return m_target->read(buffer, count); }

private:
    boost::shared_ptr<io_dev_t> m_target;
};

} // namespace io
