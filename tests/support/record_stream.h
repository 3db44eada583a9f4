#pragma once

// A stored record on its way from and to bytes in memory.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include <boost/make_shared.hpp>

#include "nelvo/io/mem_stream.h"

// A stream in memory, which may be that of keys: the bytes are read, and what is written goes over them.
class record_stream_t : public io::secure_mem_stream_t
{
public:
    explicit record_stream_t(std::string_view bytes = {})
        : io::secure_mem_stream_t(boost::make_shared<cnt::secure_array_t>(bytes.data(), bytes.size()))
    {
    }

    // A copy, which nobody wipes, and those in the stream themselves.
    std::string bytes() const { return std::string(view()); }
    std::string_view view() const { return {GetArray()->data(), GetArray()->size()}; }
};

// Takes so many bytes and no more, and has none.
class full_dev_t : public io::io_dev_t
{
public:
    explicit full_dev_t(std::uint64_t room) : m_room(room) {}

    std::uint64_t write(const void* data, std::uint64_t count) override;
    std::uint64_t read(void* buffer, std::uint64_t count) override;

private:
    std::uint64_t m_room;
};

// Reads from the stream, or writes to it, the record that it stands for.
using transfer_t = std::function<void(io::io_dev_t& stream)>;

// What it writes, and that in hexadecimal: for keys, of which no copy shall be left.
std::string Written(const transfer_t& write);
std::string WrittenHex(const transfer_t& write);

// What it says to these bytes, and to a device with so much room: the text of an exc::runtime_exc_t; fails
// the test if nothing or something else is thrown.
std::string FailureToRead(std::string_view bytes, const transfer_t& read);
std::string FailureToWrite(std::size_t room, const transfer_t& write);

// The texts of short transfers.
std::string ShortValue(std::size_t received, std::size_t expected);
std::string ShortText(std::size_t received, std::size_t expected);
std::string ShortWrite(std::size_t written, std::size_t expected);
