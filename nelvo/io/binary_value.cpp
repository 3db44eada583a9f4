#include "nelvo/io/binary_value.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/numeric_cast.h"
#include "nelvo/crypto/sec_allocator.h"

namespace io
{
namespace
{

// A length up to here costs little even if it is false, and its bytes are read to where they stay.
constexpr std::uint32_t kShortLength = 4096;

void CheckReceived(std::uint64_t received, std::uint32_t length)
{
    const auto count = static_cast<std::int64_t>(received);
    if (count != length)
        throw exc::runtime_exc_t(
            "Failed to retrieve string from the IO device: received less bytes (%1) than expected (%2).",
            count, length);
}

std::string ReadLongString(io_dev_t& stream, std::uint32_t length)
{
    // One more than the longest length needs 64 bits. calloc gives large blocks untouched.
    const std::unique_ptr<char, decltype(&std::free)> buffer(
        static_cast<char*>(std::calloc(std::size_t{length} + 1, 1)), &std::free);
    if (buffer == nullptr)
        throw std::bad_alloc();
    CheckReceived(stream.read(buffer.get(), length), length);
    return std::string(buffer.get(), length);
}

// The text is empty.
void ReadInto(io_dev_t& stream, std::string& text)
{
    const auto length = ReadValue<std::uint32_t>(stream);
    if (length == 0)
        return;
    if (length > kShortLength)
    {
        text = ReadLongString(stream, length);
        return;
    }
    text.resize(length);
    CheckReceived(stream.read(text.data(), length), length);
}

// Wipes what a block holds up to a size, and touches nothing else: that would take time for all that a false
// length asks for.
struct secret_deleter_t
{
    void operator()(char* block) const noexcept
    {
        crypto::WipeUsed(block, size);
        crypto::sec_allocator_t<char>().deallocate(block, 0);
    }

    std::size_t size;
};

cnt::secure_array_t ReadLongSecret(io_dev_t& stream, std::uint32_t length)
{
    std::unique_ptr<char, secret_deleter_t> block(crypto::sec_allocator_t<char>().allocate(length), {length});
    const std::uint64_t received = stream.read(block.get(), length);
    block.get_deleter().size = std::min<std::uint64_t>(received, length);
    CheckReceived(received, length);
    return {block.get(), length};
}

} // namespace

void ThrowShortWrite(std::uint64_t written, std::uint64_t expected)
{
    throw exc::runtime_exc_t(
        "Failed to write value to the binary stream: written less bytes (%1) than expected (%2).", written,
        expected);
}

void ThrowShortRead(std::uint64_t received, std::uint64_t expected)
{
    throw exc::runtime_exc_t(
        "Failed to retrieve value from the binary stream: received less bytes (%1) than expected (%2).",
        received, expected);
}

void WriteString(io_dev_t& stream, std::string_view text)
{
    WriteValue(stream, util::NumericCast<std::uint32_t>(text.size()));
    stream.write(text.data(), text.size());
}

std::string ReadString(io_dev_t& stream)
{
    std::string text;
    ReadInto(stream, text);
    return text;
}

void WriteOptionalString(io_dev_t& stream, const std::optional<std::string>& value)
{
    WriteValue(stream, value.has_value());
    if (value.has_value())
        WriteString(stream, *value);
}

std::optional<std::string> ReadOptionalString(io_dev_t& stream)
{
    std::optional<std::string> value;
    if (ReadValue<bool>(stream))
        ReadInto(stream, value.emplace());
    return value;
}

template <class Array>
Array ReadArray(io_dev_t& stream)
{
    const auto length = ReadValue<std::uint32_t>(stream);
    if constexpr (std::is_same_v<Array, cnt::secure_array_t>)
        if (length > kShortLength)
            return ReadLongSecret(stream, length);
    Array bytes(length);
    if (length != 0)
        CheckReceived(stream.read(bytes.data(), length), length);
    return bytes;
}

template cnt::plain_array_t ReadArray(io_dev_t& stream);
template cnt::secure_array_t ReadArray(io_dev_t& stream);

void WriteRaw(io_dev_t& stream, const void* data, std::uint64_t count) { stream.write(data, count); }

void ReadRaw(io_dev_t& stream, void* buffer, std::uint64_t count)
{
    std::memset(buffer, 0, count);
    stream.read(buffer, count);
}

} // namespace io
