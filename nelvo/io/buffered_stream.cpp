#include "nelvo/io/buffered_stream.h"

#include <algorithm>
#include <exception>
#include <utility>

#include <boost/make_shared.hpp>

#include "nelvo/core/cnt/array.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/logging/channels.h"
#include "nelvo/logging/log_exception.h"

namespace io
{
namespace
{

constexpr std::uint64_t kDefaultSize = 1048576;

} // namespace

buffered_io_dev_t::buffered_io_dev_t(boost::shared_ptr<io_dev_t> target)
    : buffered_io_dev_t(kDefaultSize, std::move(target))
{
}

buffered_io_dev_t::buffered_io_dev_t(std::uint64_t size, boost::shared_ptr<io_dev_t> target)
    : m_target(std::move(target)), m_buffer(size)
{
}

boost::shared_ptr<buffered_io_dev_t>
buffered_io_dev_t::CreateBuffered(const boost::shared_ptr<io_dev_t>& target, std::uint64_t size)
{
    return boost::make_shared<buffered_io_dev_t>(size, target);
}

buffered_io_dev_t::~buffered_io_dev_t()
{
    if (m_used == 0)
        return;
    try
    {
        logging::channels::cli.info("TCP/IP send cache is not empty and will be cleared in destructor.");
        Flush();
    }
    catch (std::exception& e)
    {
        logging::log_exception(e);
    }
}

std::uint64_t buffered_io_dev_t::write(const void* data, std::uint64_t count)
{
    if (count < m_buffer.size() - m_used)
        Append(data, count);
    else if (count != 0)
        WriteInPieces(static_cast<const char*>(data), count);
    return count;
}

// A buffer that the target threw at is still full when the next write begins.
void buffered_io_dev_t::WriteInPieces(const char* data, std::uint64_t count)
{
    const std::uint64_t size = m_buffer.size();
    while (count != 0)
    {
        const std::uint64_t piece = std::min(count, size - m_used);
        if (m_used == 0 && size < count)
            Forward(data, size);
        else
            Append(data, piece);
        data += piece;
        count -= piece;
        if (m_used == size)
            Flush();
    }
}

void buffered_io_dev_t::Append(const void* data, std::uint64_t count)
{
    cnt::CopyBytes(m_buffer.data() + m_used, data, count);
    m_used += count;
}

void buffered_io_dev_t::Forward(const char* data, std::uint64_t count)
{
    m_target->write(data, count);
    m_forwarded += count;
}

std::uint64_t buffered_io_dev_t::read(void* buffer, std::uint64_t count)
{
    Flush();
    return m_target->read(buffer, count);
}

void buffered_io_dev_t::Flush()
{
    if (m_used == 0)
        return;
    Forward(m_buffer.data(), m_used);
    m_used = 0;
}

buffered_bin_stream_tt::buffered_bin_stream_tt(const boost::shared_ptr<io_dev_t>& target)
    : binary_stream_tt(boost::make_shared<buffered_io_dev_t>(target))
{
}

buffered_bin_stream_tt::buffered_bin_stream_tt(const boost::shared_ptr<buffered_io_dev_t>& device)
    : binary_stream_tt(device)
{
}

void buffered_bin_stream_tt::Flush()
{
    auto* const device = dynamic_cast<buffered_io_dev_t*>(m_device.get());
    if (device == nullptr)
        throw exc::runtime_exc_t("Failed to cast binary stream device to buffered device object.");
    device->Flush();
}

} // namespace io
