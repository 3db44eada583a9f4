#pragma once

// Connections of several kinds, by their ids. Held by a shared pointer; dev_registry.h finds pools by their
// ids. Any thread may use a pool at any time, and one connection serves one thread at a time.

#include <cstdint>
#include <map>
#include <string>

#include <boost/shared_ptr.hpp>
#include <boost/thread/recursive_mutex.hpp>

#include "nelvo/io/io_dev.h"

namespace io
{

// What a connection is for.
enum class connection_kind_t : std::uint32_t
{
    kTransport = 0,
    kTrafficControl = 1,
    kTapeControl = 2
};

// "transport", "traffic control", "tape control"; "unknown" for any other value.
std::string ConnectionKindName(connection_kind_t kind);

class io_dev_pool_t
{
public:
    // Replaces a connection with the same id. The connection must not be null.
    void AddConnection(std::uint32_t id, connection_kind_t kind,
                       const boost::shared_ptr<io_dev_t>& connection);

    // Nothing happens without one.
    void RemoveConnection(std::uint32_t id);

    // Throws exc::runtime_exc_t with "TCP connections pool does not contain connection with ID '<id>'."
    boost::shared_ptr<io_dev_t> GetConnection(std::uint32_t id) const;

    // The tape control connection with the lowest id. Throws exc::runtime_exc_t with "Tape control connection
    // not found."
    boost::shared_ptr<io_dev_t> GetTapeControlConnection() const;

private:
    struct connection_t
    {
        connection_kind_t kind;
        boost::shared_ptr<io_dev_t> device;
    };

    mutable boost::recursive_mutex m_mutex;
    std::map<std::uint32_t, connection_t> m_connections;
};

} // namespace io
