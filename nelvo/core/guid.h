#pragma once

// The one type of all identifiers: agent ids, key ids and the like. A 16-byte value in the byte order of
// libuuid's uuid_t, which is the order of the text read from left to right (RFC 4122). Copied by value.
//
// Text form: "{" + 36 characters + "}", lower-case hexadecimal digits with a - after the 8th, 12th, 16th
// and 20th; 38 characters. Each text that leaves a Guid has this form.
//
// What fails in Generate, ToString, ToWString and Parse (in practice memory alone) leaves with a context
// line: "Failed to create GUID.", "Failed to convert GUID to AString." (Parse of narrow text too) or "Failed
// to convert GUID to WString.".

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "nelvo/core/cnt/array.h"

// The platform's record layout: the first three fields as integers in host order (little-endian), the last
// eight bytes as they are.
struct SGuidRecord
{
    std::uint32_t time_low;
    std::uint16_t time_mid;
    std::uint16_t time_hi_and_version;
    std::uint8_t clock_seq_and_node[8];
};

class Guid
{
public:
    static constexpr std::size_t kSize = 16;

    // The null GUID, sixteen zero bytes.
    Guid() = default;

    // To and from the record: only the order of the bytes of its first three fields changes.
    explicit Guid(const SGuidRecord& record);
    Guid& operator=(const SGuidRecord& record);
    SGuidRecord ToRecord() const;

    // A new value: random (version 4) if the system has a source of random bytes, time-based (version 1)
    // otherwise.
    static Guid Generate();
    void CreateInPlace();

    // The value of a text with or without either brace, in either case. Bad text gives the null GUID, as
    // does the text of the null GUID; it is no failure. What follows a zero byte is not looked at, but for
    // the brace at the end.
    static Guid Parse(std::string_view text);

    // Converts by util::WideToMultibyte first. Text that it cannot convert is a failure, with "Failed to
    // convert WString to GUID.".
    static Guid Parse(std::wstring_view text);

    // Takes 16 bytes as they are. Throws exc::runtime_exc_t for any other size.
    static Guid FromBytes(const void* data, std::size_t size);

    // Makes the array 16 bytes long, whatever it holds, and puts the bytes there. Throws std::bad_alloc
    // alone, and leaves the array then.
    void CopyTo(cnt::plain_array_t& array) const;
    void CopyTo(cnt::secure_array_t& array) const;

    // The text form.
    std::string ToString() const;
    std::wstring ToWString() const;

    // The null GUID has sixteen zero bytes; Clear makes the value this.
    bool IsNull() const;
    void Clear();

    // The 16 bytes, which hold as long as the object.
    const std::uint8_t* Data() const { return m_bytes.data(); }

    // As uuid_compare: time_low, time_mid, time_hi_and_version, clock_seq as unsigned integers, then the
    // node bytes.
    friend bool operator==(const Guid& left, const Guid& right) { return left.Compare(right) == 0; }
    friend bool operator!=(const Guid& left, const Guid& right) { return left.Compare(right) != 0; }
    friend bool operator<(const Guid& left, const Guid& right) { return left.Compare(right) < 0; }
    friend bool operator>(const Guid& left, const Guid& right) { return left.Compare(right) > 0; }

private:
    friend Guid SwapGuidByteOrder(const Guid& value);

    int Compare(const Guid& other) const;

    std::array<std::uint8_t, kSize> m_bytes{};
};

// The value with the bytes of each of the first three fields reversed: between an id as firmware stores it
// and as it is printed.
Guid SwapGuidByteOrder(const Guid& value);
