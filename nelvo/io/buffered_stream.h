#pragma once

// A device that collects what is written and hands it to another device in large pieces, and the stream over
// it: how records reach a file or a socket without a call of the system for each value.
//
//   io::buffered_bin_stream_tt stream(file_device);
//   util::SerializeFileInfo(info, stream);
//   stream.Flush();
//
// Reading is not buffered. Exceptions of the target pass through write, read and Flush. What went through the
// buffer stays in its memory, also when that is given back, so it is not for keys.

#include <cstdint>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "nelvo/io/binary_stream.h"

namespace io
{

class buffered_io_dev_t : public io_dev_t
{
public:
    // The buffer has 1 MiB (1048576 bytes), or a size in bytes. It is allocated and zeroed here. A device
    // with a size of 0 must not be written to: it would offer its target nothing, without end. The target
    // must not be null by the time of the first call of it.
    explicit buffered_io_dev_t(boost::shared_ptr<io_dev_t> target);
    buffered_io_dev_t(std::uint64_t size, boost::shared_ptr<io_dev_t> target);
    static boost::shared_ptr<buffered_io_dev_t> CreateBuffered(const boost::shared_ptr<io_dev_t>& target,
                                                               std::uint64_t size);

    // Bytes that nobody flushed are handed on all the same, and the log gets the line "TCP/IP send cache is
    // not empty and will be cleared in destructor." on the channel "cli". A std::exception of the target is
    // logged and the bytes are lost.
    // Kept: BufferedIoDev.DestructorSaysThatItDropsWhatItHandsOn
    ~buffered_io_dev_t() override;
    buffered_io_dev_t(const buffered_io_dev_t&) = delete;
    buffered_io_dev_t& operator=(const buffered_io_dev_t&) = delete;

    // Returns the count it was given. A full buffer goes to the target at once, and of what is larger than an
    // empty buffer, pieces of the buffer's size go there without being copied.
    //
    // If the target throws, the bytes in the buffer stay, and the next call that writes, reads or flushes
    // offers them again. How much of the data is among them is not known to the caller.
    //
    // The target is expected to take everything or to throw: what it leaves is not noticed, and lost.
    // Kept: BufferedIoDev.WhatTheTargetLeavesIsLostAndCounted
    std::uint64_t write(const void* data, std::uint64_t count) override;

    // Flushes, so that a request is on its way before its answer is read, and reads from the target.
    std::uint64_t read(void* buffer, std::uint64_t count) override;

    // Hands the bytes in the buffer to the target in one write. Does not call it if there are none.
    void Flush();

    // The bytes that the target was offered and did not throw at, since the last reset.
    std::uint64_t GetForwardedBytes() const { return m_forwarded; }
    void ResetForwardedBytes() { m_forwarded = 0; }

private:
    void WriteInPieces(const char* data, std::uint64_t count);
    void Forward(const char* data, std::uint64_t count);
    void Append(const void* data, std::uint64_t count);

    boost::shared_ptr<io_dev_t> m_target;
    std::vector<char> m_buffer;
    std::uint64_t m_used = 0;
    std::uint64_t m_forwarded = 0;
};

class buffered_bin_stream_tt : public binary_stream_tt
{
public:
    // Over a new buffered device of 1 MiB on the target.
    explicit buffered_bin_stream_tt(const boost::shared_ptr<io_dev_t>& target);

    // Over this device.
    explicit buffered_bin_stream_tt(const boost::shared_ptr<buffered_io_dev_t>& device);

    // That of the device. If there is none, or one of another kind by the doing of a derived class,
    // exc::runtime_exc_t with "Failed to cast binary stream device to buffered device object."
    void Flush();

private:
    // Nothing ever fills it; what it adds is its size.
    // Kept: BufferedBinStream.HasRoomForAThirdHandleThatStaysEmpty
    boost::shared_ptr<io_dev_t> m_spare;
};

} // namespace io
