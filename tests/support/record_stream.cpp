#include "tests/support/record_stream.h"

#include <algorithm>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/format.h"
#include "tests/support/golden.h"
#include "tests/support/thrown.h"

std::uint64_t full_dev_t::write(const void*, std::uint64_t count)
{
    const std::uint64_t taken = std::min(count, m_room);
    m_room -= taken;
    return taken;
}

std::uint64_t full_dev_t::read(void*, std::uint64_t) { return 0; }

std::string Written(const transfer_t& write)
{
    record_stream_t stream;
    write(stream);
    return stream.bytes();
}

std::string WrittenHex(const transfer_t& write)
{
    record_stream_t stream;
    write(stream);
    return Hex(stream.view());
}

std::string FailureToRead(std::string_view bytes, const transfer_t& read)
{
    record_stream_t stream(bytes);
    return Thrown<exc::runtime_exc_t>([&] { read(stream); });
}

std::string FailureToWrite(std::size_t room, const transfer_t& write)
{
    full_dev_t device(room);
    return Thrown<exc::runtime_exc_t>([&] { write(device); });
}

std::string ShortValue(std::size_t received, std::size_t expected)
{
    return util::Format(
        "Failed to retrieve value from the binary stream: received less bytes (%1) than expected (%2).",
        received, expected);
}

std::string ShortText(std::size_t received, std::size_t expected)
{
    return util::Format(
        "Failed to retrieve string from the IO device: received less bytes (%1) than expected (%2).",
        received, expected);
}

std::string ShortWrite(std::size_t written, std::size_t expected)
{
    return util::Format(
        "Failed to write value to the binary stream: written less bytes (%1) than expected (%2).", written,
        expected);
}
