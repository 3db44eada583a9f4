#include "nelvo/io/mem_stream.h"

#include <algorithm>
#include <new>
#include <utility>

#include <boost/make_shared.hpp>

#include "nelvo/core/exc/runtime_exc.h"

namespace io
{
namespace
{

constexpr std::uint64_t kNumberSize = sizeof(std::uint32_t);
constexpr std::uint64_t kLongNumberSize = sizeof(std::uint64_t);

} // namespace

template <class Array>
mem_dev_tt<Array>::mem_dev_tt() : mem_dev_tt(boost::make_shared<Array>())
{
}

template <class Array>
mem_dev_tt<Array>::mem_dev_tt(boost::shared_ptr<Array> array) : m_array(std::move(array))
{
}

// Nearly all that records write and read has one of two sizes. Those that need no more memory are copied
// right here, without a call or a register to be saved; the rest is left to a function of its own.

template <class Array>
std::uint64_t mem_dev_tt<Array>::write(const void* data, std::uint64_t count)
{
    Array& array = *m_array;
    if ((count == kNumberSize || count == kLongNumberSize) && m_offset == array.size() &&
        count <= array.spare())
    {
        array.append(static_cast<const char*>(data), count);
        m_offset += count;
        return count;
    }
    return WriteAny(data, count);
}

template <class Array>
std::uint64_t mem_dev_tt<Array>::WriteAny(const void* data, std::uint64_t count)
{
    const std::uint64_t end = m_offset + count;
    if (end < count)
        throw std::bad_alloc();
    if (m_offset == m_array->size())
        m_array->append(static_cast<const char*>(data), count);
    else
        WriteOver(data, count);
    m_offset = end;
    return count;
}

template <class Array>
void mem_dev_tt<Array>::WriteOver(const void* data, std::uint64_t count)
{
    m_array->resize(std::max<std::uint64_t>(m_array->size(), m_offset + count));
    cnt::CopyBytes(m_array->data() + m_offset, data, count);
}

template <class Array>
std::uint64_t mem_dev_tt<Array>::read(void* buffer, std::uint64_t count)
{
    if ((count == kNumberSize || count == kLongNumberSize) && count <= GetRemaining())
    {
        cnt::CopyBytes(buffer, m_array->data() + m_offset, count);
        m_offset += count;
        return count;
    }
    return ReadAny(buffer, count);
}

template <class Array>
std::uint64_t mem_dev_tt<Array>::ReadAny(void* buffer, std::uint64_t count)
{
    const std::uint64_t delivered = std::min(count, GetRemaining());
    // The offset may lie beyond an array that has shrunk.
    if (delivered == 0)
        return 0;
    cnt::CopyBytes(buffer, m_array->data() + m_offset, delivered);
    m_offset += delivered;
    return delivered;
}

template <class Array>
char* mem_dev_tt<Array>::GetCurrentPointer() const
{
    return m_array->empty() ? nullptr : m_array->data() + m_offset;
}

template <class Array>
std::uint64_t mem_dev_tt<Array>::GetRemaining() const
{
    return m_offset < m_array->size() ? m_array->size() - m_offset : 0;
}

template <class Array>
void mem_dev_tt<Array>::SeekRelative(std::uint64_t size)
{
    if (m_offset > m_array->size() || size > GetRemaining())
        throw exc::runtime_exc_t(
            "Failed to seek memory stream pointer : out of the buffer (buffer size '%1', current offset '%2', seek size '%3').",
            m_array->size(), m_offset, size);
    m_offset += size;
}

template <class Array>
void mem_dev_tt<Array>::SeekAbsolute(std::uint64_t offset)
{
    if (offset > m_array->size())
        throw exc::runtime_exc_t(
            "Failed to seek memory stream pointer : out of the buffer (buffer size '%1', current offset '%2', seek offset '%3').",
            m_array->size(), m_offset, offset);
    m_offset = offset;
}

template <class Array>
mem_stream_tt<Array>::mem_stream_tt() : binary_stream_tt(boost::make_shared<mem_dev_tt<Array>>())
{
}

template <class Array>
mem_stream_tt<Array>::mem_stream_tt(const boost::shared_ptr<Array>& array)
    : binary_stream_tt(boost::make_shared<mem_dev_tt<Array>>(array))
{
}

template <class Array>
boost::shared_ptr<mem_dev_tt<Array>> mem_stream_tt<Array>::GetMemDevice() const
{
    auto device = boost::dynamic_pointer_cast<mem_dev_tt<Array>>(m_device);
    if (device == nullptr)
        throw exc::runtime_exc_t("Failed to cast binary stream device to memory RW device object.");
    return device;
}

template <class Array>
boost::shared_ptr<Array> mem_stream_tt<Array>::GetArray() const
{
    return GetMemDevice()->GetArray();
}

template <class Array>
std::uint64_t mem_stream_tt<Array>::GetRemaining() const
{
    return GetMemDevice()->GetRemaining();
}

template class mem_dev_tt<cnt::plain_array_t>;
template class mem_dev_tt<cnt::secure_array_t>;
template class mem_stream_tt<cnt::plain_array_t>;
template class mem_stream_tt<cnt::secure_array_t>;

} // namespace io
