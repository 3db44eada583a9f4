#include "nelvo/core/cnt/buf_writer.h"

#include <new>
#include <utility>

#include <boost/make_shared.hpp>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/numeric_cast.h"

namespace cnt
{

CBufWriter::CBufWriter() : CBufWriter(boost::make_shared<plain_array_t>()) {}

CBufWriter::CBufWriter(boost::shared_ptr<plain_array_t> buffer) : m_buffer(std::move(buffer)) {}

CBufWriter::CBufWriter(std::size_t initial_size) : CBufWriter(boost::make_shared<plain_array_t>(initial_size))
{
}

CBufWriter::CBufWriter(const CBufWriter& other)
    : m_position(other.m_position),
      m_buffer(boost::make_shared<plain_array_t>(*other.m_buffer)),
      m_reserved_slot(other.m_reserved_slot)
{
}

void CBufWriter::WriteBool(bool value)
{
    const char byte = value ? 1 : 0;
    Put(sizeof(byte), &byte);
}

void CBufWriter::WriteInt32(std::uint32_t value) { Put(sizeof(value), &value); }

void CBufWriter::WriteInt64(std::uint64_t value) { Put(sizeof(value), &value); }

void CBufWriter::WriteString(std::string_view text) { PutWithLength(text.size(), text.data()); }

void CBufWriter::WriteBlob(std::size_t size, const void* data) { PutWithLength(size, data); }

void CBufWriter::WriteRaw(std::size_t size, const void* data) { Put(size, data); }

char* CBufWriter::ReserveLength(std::uint32_t greatest)
{
    char* const slot = RoomWithLength(greatest);
    m_reserved_slot = slot_t{m_position, greatest};
    return slot + sizeof(greatest);
}

void CBufWriter::FillLength(std::uint32_t length)
{
    if (!m_reserved_slot)
        throw exc::runtime_exc_t("No length slot is reserved.");
    if (length > m_reserved_slot->greatest)
        ThrowOutOfBound(length - 1, m_reserved_slot->greatest);
    RoomWithLength(length); // behind the position, which is not before the slot
    CopyBytes(m_buffer->data() + m_reserved_slot->place, &length, sizeof(length));
    m_reserved_slot.reset();
    m_position += sizeof(length) + std::uint64_t{length};
}

void CBufWriter::Rewind()
{
    m_position = 0;
    m_reserved_slot.reset();
}

void CBufWriter::Reset()
{
    Rewind();
    m_buffer->resize(0);
}

// The place at the position, with room for so many bytes.
char* CBufWriter::Room(std::uint64_t size)
{
    // Beyond this, no array goes, and the sums below would wrap.
    if (size > PTRDIFF_MAX - m_position)
        throw std::bad_alloc();
    const std::uint64_t needed = m_position + size;
    if (needed > m_buffer->size())
        m_buffer->resize((needed + kGrowth - 1) / kGrowth * kGrowth);
    return m_buffer->data() + m_position;
}

// The same for a length and as many bytes behind it.
char* CBufWriter::RoomWithLength(std::uint32_t length)
{
    return Room(sizeof(length) + std::uint64_t{length});
}

void CBufWriter::Put(std::size_t size, const void* data)
{
    CopyBytes(Room(size), data, size);
    m_position += size;
}

// One room for both, so that a length is never written without its bytes.
void CBufWriter::PutWithLength(std::size_t size, const void* data)
{
    const auto length = util::NumericCast<std::uint32_t>(size);
    RoomWithLength(length);
    Put(sizeof(length), &length);
    Put(size, data);
}

} // namespace cnt
