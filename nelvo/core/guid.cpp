#include "nelvo/core/guid.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <uuid/uuid.h>

#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/wide.h"

static_assert(sizeof(uuid_t) == Guid::kSize && sizeof(SGuidRecord) == Guid::kSize);

namespace
{

constexpr std::size_t kTextSize = 36;

std::string_view WithoutBraces(std::string_view text)
{
    if (text.size() <= 1)
        return text;
    if (text.front() == '{')
        text.remove_prefix(1);
    if (text.back() == '}')
        text.remove_suffix(1);
    return text;
}

// uuid_parse stores nothing when the text is bad.
void ParseInto(std::uint8_t* bytes, std::string_view text)
{
    ::uuid_parse(std::string(WithoutBraces(text)).c_str(), bytes);
}

std::string BracedText(const std::uint8_t* bytes)
{
    std::string text(kTextSize + 2, '{');
    ::uuid_unparse_lower(bytes, &text[1]);
    text.back() = '}';
    return text;
}

template <class Array, class Bytes>
void CopyBytesTo(Array& array, const Bytes& bytes)
{
    array.resize(bytes.size());
    std::memcpy(array.data(), bytes.data(), bytes.size());
}

} // namespace

Guid::Guid(const SGuidRecord& record)
{
    std::memcpy(m_bytes.data(), &record, kSize);
    *this = SwapGuidByteOrder(*this);
}

Guid& Guid::operator=(const SGuidRecord& record) { return *this = Guid(record); }

SGuidRecord Guid::ToRecord() const
{
    const Guid swapped = SwapGuidByteOrder(*this);
    SGuidRecord record;
    std::memcpy(&record, swapped.m_bytes.data(), kSize);
    return record;
}

Guid Guid::Generate()
{
    Guid value;
    value.CreateInPlace();
    return value;
}

void Guid::CreateInPlace()
try
{
    ::uuid_generate(m_bytes.data());
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to create GUID.", e);
}

// The context is the same text as ToString's, although the conversion goes the other way.
// Kept: Guid.ParseFailureCarriesToStringsText
Guid Guid::Parse(std::string_view text)
try
{
    Guid value;
    ParseInto(value.m_bytes.data(), text);
    return value;
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to convert GUID to AString.", e);
}

Guid Guid::Parse(std::wstring_view text)
try
{
    Guid value;
    ParseInto(value.m_bytes.data(), util::WideToMultibyte(text));
    return value;
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to convert WString to GUID.", e);
}

Guid Guid::FromBytes(const void* data, std::size_t size)
{
    if (size != kSize)
        throw exc::runtime_exc_t("Failed to parse GUID value: invalid size of the specified data (%1).",
                                 size);
    Guid value;
    std::memcpy(value.m_bytes.data(), data, kSize);
    return value;
}

void Guid::CopyTo(cnt::plain_array_t& array) const { CopyBytesTo(array, m_bytes); }

void Guid::CopyTo(cnt::secure_array_t& array) const { CopyBytesTo(array, m_bytes); }

std::string Guid::ToString() const
try
{
    return BracedText(m_bytes.data());
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to convert GUID to AString.", e);
}

std::wstring Guid::ToWString() const
try
{
    return util::MultibyteToWide(BracedText(m_bytes.data()));
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to convert GUID to WString.", e);
}

bool Guid::IsNull() const { return ::uuid_is_null(m_bytes.data()) != 0; }

void Guid::Clear() { m_bytes.fill(0); }

int Guid::Compare(const Guid& other) const { return ::uuid_compare(m_bytes.data(), other.m_bytes.data()); }

Guid SwapGuidByteOrder(const Guid& value)
{
    Guid swapped = value;
    auto& bytes = swapped.m_bytes;
    std::reverse(bytes.begin(), bytes.begin() + 4);
    std::swap(bytes[4], bytes[5]);
    std::swap(bytes[6], bytes[7]);
    return swapped;
}
