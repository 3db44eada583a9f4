#include "nelvo/io/dev_pool.h"

#include <algorithm>

#include <boost/thread/lock_guard.hpp>

#include "nelvo/core/exc/runtime_exc.h"

namespace io
{
namespace
{

using lock_t = boost::lock_guard<boost::recursive_mutex>;

} // namespace

std::string ConnectionKindName(connection_kind_t kind)
{
    switch (kind)
    {
    case connection_kind_t::kTransport: return "transport";
    case connection_kind_t::kTrafficControl: return "traffic control";
    case connection_kind_t::kTapeControl: return "tape control";
    }
    return "unknown";
}

void io_dev_pool_t::AddConnection(std::uint32_t id, connection_kind_t kind,
                                  const boost::shared_ptr<io_dev_t>& connection)
{
    const lock_t lock(m_mutex);
    m_connections[id] = {kind, connection};
}

void io_dev_pool_t::RemoveConnection(std::uint32_t id)
{
    const lock_t lock(m_mutex);
    m_connections.erase(id);
}

boost::shared_ptr<io_dev_t> io_dev_pool_t::GetConnection(std::uint32_t id) const
{
    const lock_t lock(m_mutex);
    const auto found = m_connections.find(id);
    if (found == m_connections.end())
        throw exc::runtime_exc_t("TCP connections pool does not contain connection with ID '%1'.", id);
    return found->second.device;
}

boost::shared_ptr<io_dev_t> io_dev_pool_t::GetTapeControlConnection() const
{
    const lock_t lock(m_mutex);
    const auto found =
        std::find_if(m_connections.begin(), m_connections.end(),
                     [](const auto& entry) { return entry.second.kind == connection_kind_t::kTapeControl; });
    if (found == m_connections.end())
        throw exc::runtime_exc_t("Tape control connection not found.");
    return found->second.device;
}

} // namespace io
