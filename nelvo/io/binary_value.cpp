#include "nelvo/io/binary_value.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/numeric_cast.h"

namespace io
{
namespace
{

std::uint32_t CheckedLength(std::uint64_t length) { return util::NumericCast<std::uint32_t>(length); }

void ReadSized(io_dev_t& stream, void* buffer, std::uint32_t length)
{
    const auto received = static_cast<std::int64_t>(stream.read(buffer, length));
    if (received != length)
        throw exc::runtime_exc_t(
            "Failed to retrieve string from the IO device: received less bytes (%1) than expected (%2).",
            received, length);
}

} // namespace

void WriteExactly(io_dev_t& stream, const void* data, std::uint64_t count)
{
    const std::uint64_t written = stream.write(data, count);
    if (written != count)
        throw exc::runtime_exc_t(
            "Failed to write value to the binary stream: written less bytes (%1) than expected (%2).",
            written, count);
}

void ReadExactly(io_dev_t& stream, void* buffer, std::uint64_t count)
{
    const std::uint64_t received = stream.read(buffer, count);
    if (received != count)
        throw exc::runtime_exc_t(
            "Failed to retrieve value from the binary stream: received less bytes (%1) than expected (%2).",
            received, count);
}

void WriteString(io_dev_t& stream, std::string_view text)
{
    WriteValue(stream, CheckedLength(text.size()));
    stream.write(text.data(), text.size());
}

std::string ReadString(io_dev_t& stream)
{
    const auto length = ReadValue<std::uint32_t>(stream);
    if (length == 0)
        return {};
    // One more than the longest length needs 64 bits. calloc gives large blocks untouched.
    const std::unique_ptr<char, decltype(&std::free)> buffer(
        static_cast<char*>(std::calloc(std::size_t{length} + 1, 1)), &std::free);
    if (buffer == nullptr)
        throw std::bad_alloc();
    ReadSized(stream, buffer.get(), length);
    return std::string(buffer.get(), length);
}

void WriteOptionalString(io_dev_t& stream, const std::optional<std::string>& value)
{
    WriteValue(stream, value.has_value());
    if (value.has_value())
        WriteString(stream, *value);
}

std::optional<std::string> ReadOptionalString(io_dev_t& stream)
{
    if (!ReadValue<bool>(stream))
        return std::nullopt;
    return ReadString(stream);
}

template <class Array>
Array ReadArray(io_dev_t& stream)
{
    Array bytes(ReadValue<std::uint32_t>(stream));
    if (!bytes.empty())
        ReadSized(stream, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
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
