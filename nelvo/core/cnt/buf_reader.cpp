#include "nelvo/core/cnt/buf_reader.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "nelvo/context/agent_options.h"
#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"

CBufReader::CBufReader() : CBufReader(nullptr) {}

CBufReader::CBufReader(buffer_ptr_t buffer)
    : m_buffer(std::move(buffer)), m_max_length(GetAgentOptions().GetMaxReadLength())
{
}

void CBufReader::SetBuffer(buffer_ptr_t buffer)
{
    m_buffer = std::move(buffer);
    m_position = 0;
}

const char* CBufReader::Take(std::uint64_t size)
{
    if (m_buffer == nullptr)
        throw exc::runtime_exc_t("CBufReader buffer not initialized.");
    // No sum, which could wrap. The position is beyond the end if somebody cut the array.
    const std::uint64_t end = m_buffer->size();
    if (m_position > end || size > end - m_position)
        throw exc::runtime_exc_t(
            "Out of the buffer, buffer size '%1', struct size '%2', buffer pointer '%3'.", end, size,
            m_position);
    const char* const taken = m_buffer->data() + m_position;
    m_position += size;
    return taken;
}

bool CBufReader::ReadBool()
try
{
    return *Take(1) != 0;
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to extract boolean value from buffer.", e);
}

std::uint32_t CBufReader::ReadUint32()
try
{
    return TakeValue<std::uint32_t>();
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to extract integer value from buffer.", e);
}

std::uint64_t CBufReader::ReadUint64()
try
{
    return TakeValue<std::uint64_t>();
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to extract integer value from buffer.", e);
}

// The context has a blank before its point, and no other line of the reader has.
// Kept: BufReader.ContextOfAStringHasABlankBeforeItsPoint
std::string CBufReader::ReadString()
try
{
    const auto length = TakeValue<std::uint32_t>();
    if (length > m_max_length)
        throw exc::runtime_exc_t("Invalid length of the string '%1'.", length);
    const char* const text = Take(length);
    return std::string(text, length);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to extract multi-byte string from buffer .", e);
}

void CBufReader::ReadBlob(cnt::plain_array_t& target) { ReadBlobInto(target); }

void CBufReader::ReadBlob(cnt::secure_array_t& target) { ReadBlobInto(target); }

std::size_t CBufReader::ReadBlob(void* memory, std::size_t size)
try
{
    const std::uint32_t length = TakeBlobLength(size);
    const char* const blob = Take(length);
    cnt::CopyBytes(memory, blob, length);
    return length;
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to extract binary content from buffer.", e);
}

template <class Value>
Value CBufReader::TakeValue()
{
    Value value;
    std::memcpy(&value, Take(sizeof(value)), sizeof(value));
    return value;
}

std::uint32_t CBufReader::TakeBlobLength(std::uint64_t greatest)
{
    const auto length = TakeValue<std::uint32_t>();
    if (length > std::min<std::uint64_t>(greatest, m_max_length))
        throw exc::runtime_exc_t("Invalid length of the binary data '%1'.", length);
    return length;
}

template <class Array>
void CBufReader::ReadBlobInto(Array& target)
try
{
    const std::uint32_t length = TakeBlobLength(m_max_length);
    target.assign(Take(length), length);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to extract binary content from buffer.", e);
}
