#pragma once

// The one encoding of all stored and sent records: each value in its own width, little-endian, without
// padding, tags or framing. A reader knows the record's layout.
//
//   io::WriteValue(stream, std::uint32_t(0x01020304));   // 04 03 02 01
//   io::WriteValue(stream, true);                        // 01 00 00 00
//   io::WriteString(stream, "ab");                       // 02 00 00 00 61 62
//
// An 8-bit number takes 1 byte, other whole numbers their 4 or 8 bytes, an enumeration 4 bytes, and so does a
// boolean: 0 or 1, and on reading anything but 0 is true. An optional value is a boolean and, if that is
// true, the value. A string or byte array is its length as an unsigned 32-bit number, then its bytes as they
// stand.
//
// Each value is one call of the device. A short transfer is an exc::runtime_exc_t with the text told; what
// the device throws passes as it is. After either, the position in the stream is not known.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "nelvo/core/cnt/array.h"
#include "nelvo/io/io_dev.h"

namespace io
{

// What the functions here throw on a short transfer: "Failed to write value to the binary stream: written
// less bytes (<written>) than expected (<expected>)." and "Failed to retrieve value from the binary stream:
// received less bytes (<received>) than expected (<expected>)."
[[noreturn]] void ThrowShortWrite(std::uint64_t written, std::uint64_t expected);
[[noreturn]] void ThrowShortRead(std::uint64_t received, std::uint64_t expected);

// In this header, so that a value costs its call of the device and a comparison.
inline void WriteExactly(io_dev_t& stream, const void* data, std::uint64_t count)
{
    const std::uint64_t written = stream.write(data, count);
    if (written != count)
        ThrowShortWrite(written, count);
}

// As WriteExactly: all of the bytes, or ThrowShortRead.
inline void ReadExactly(io_dev_t& stream, void* buffer, std::uint64_t count)
{
    const std::uint64_t received = stream.read(buffer, count);
    if (received != count)
        ThrowShortRead(received, count);
}

// The widths that the encoding has.
template <class Value>
constexpr bool kIsStreamValue = std::is_enum_v<Value>
                                    ? sizeof(Value) <= 4
                                    : std::is_integral_v<Value> &&
                                          (sizeof(Value) == 1 || sizeof(Value) == 4 || sizeof(Value) == 8);

// One value in the encoding above.
template <class Value>
void WriteValue(io_dev_t& stream, Value value)
{
    static_assert(kIsStreamValue<Value>);
    if constexpr (std::is_same_v<Value, bool> || std::is_enum_v<Value>)
        WriteValue(stream, static_cast<std::uint32_t>(value));
    else
        WriteExactly(stream, &value, sizeof(value));
}

// What a value starts from, so that bytes which the device only claims to have read are 0. Through an address
// that the compiler knows nothing of: a zero stored relative to the stack pointer is what the processor takes
// the value for, until it finds that the device wrote there through another pointer and begins anew. A file
// info record is read in half to a third of the time without that.
template <class Value>
void PutZero(Value& value)
{
    Value* place = &value;
    asm("" : "+r"(place));
    *place = 0;
}

// The next value. A boolean is true for any number but 0, an enumeration takes any.
template <class Value>
Value ReadValue(io_dev_t& stream)
{
    static_assert(kIsStreamValue<Value>);
    if constexpr (std::is_same_v<Value, bool>)
        return ReadValue<std::uint32_t>(stream) != 0;
    else if constexpr (std::is_enum_v<Value>)
        return static_cast<Value>(ReadValue<std::uint32_t>(stream));
    else
    {
        Value value;
        PutZero(value);
        ReadExactly(stream, &value, sizeof(value));
        return value;
    }
}

// Whether there is a value, and the value if so.
template <class Value>
void WriteOptionalValue(io_dev_t& stream, const std::optional<Value>& value)
{
    WriteValue(stream, value.has_value());
    if (value.has_value())
        WriteValue(stream, *value);
}

// In place, which spares the processor an optional that is written in parts and copied as a whole: a third of
// the time of a record. What stood there stays after a failure.
template <class Value>
void ReadOptionalValue(io_dev_t& stream, std::optional<Value>& value)
{
    if (ReadValue<bool>(stream))
        value = ReadValue<Value>(stream);
    else
        value.reset();
}

// The same, as a result.
template <class Value>
std::optional<Value> ReadOptionalValue(io_dev_t& stream)
{
    std::optional<Value> value;
    ReadOptionalValue(stream, value);
    return value;
}

// A text of 4 GiB or more is "Unable to cast value from [m] to [j]." An empty text writes its bytes too, with
// a count of 0.
//
// Only the length must be taken whole: a device that leaves some of the bytes is not noticed.
// Kept: BinaryValue.ShortWriteOfAStringsBytesIsNotNoticed
void WriteString(io_dev_t& stream, std::string_view text);

// A short read is "Failed to retrieve string from the IO device: received less bytes (<received>) than
// expected (<expected>)." with received as a signed number. For a length of 0 nothing more is read. The
// length is not limited: memory for all of it is asked for before the bytes are read (std::bad_alloc), but
// above a few kibibytes only touched as far as they come.
std::string ReadString(io_dev_t& stream);

// Whether there is a text, and the text if so, as WriteString and ReadString do it.
void WriteOptionalString(io_dev_t& stream, const std::optional<std::string>& value);
std::optional<std::string> ReadOptionalString(io_dev_t& stream);

// A byte array, as WriteString and ReadString do it, with their texts. What was read of a secure one is wiped
// when it turns out too short or the device throws.
template <class Array>
void WriteArray(io_dev_t& stream, const Array& bytes)
{
    WriteString(stream, std::string_view(bytes.data(), bytes.size()));
}
template <class Array>
Array ReadArray(io_dev_t& stream);
extern template cnt::plain_array_t ReadArray(io_dev_t& stream);
extern template cnt::secure_array_t ReadArray(io_dev_t& stream);

// Bytes whose count the device may cut short, and nobody looks: for records that are lenient there. Reading
// zeroes the buffer first, so that what did not come is 0.
void WriteRaw(io_dev_t& stream, const void* data, std::uint64_t count);
void ReadRaw(io_dev_t& stream, void* buffer, std::uint64_t count);

// The same for one unsigned value: of one that is cut off, the missing bytes are 0.
template <class Value>
void WriteRawValue(io_dev_t& stream, Value value)
{
    static_assert(kIsStreamValue<Value> && std::is_unsigned_v<Value>);
    WriteRaw(stream, &value, sizeof(value));
}
template <class Value>
Value ReadRawValue(io_dev_t& stream)
{
    static_assert(kIsStreamValue<Value> && std::is_unsigned_v<Value>);
    Value value;
    PutZero(value);
    stream.read(&value, sizeof(value));
    return value;
}

// An array of that size, whose memory is only touched as far as the bytes come; the wiping of a secure one,
// in the end, reads all of it.
template <class Array>
Array ReadRawArray(io_dev_t& stream, std::uint32_t size)
{
    Array bytes(size);
    stream.read(bytes.data(), size);
    return bytes;
}

} // namespace io
