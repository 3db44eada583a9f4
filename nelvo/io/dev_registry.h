#pragma once

// What the stream layer finds by name or number: factories of readers and writers, connection pools, and the
// prefixes of paths that stand for virtual storage. The common library context has one. Any thread may use it
// at any time; a mutex is held for the whole of each operation, also while it logs.
//
//   MemFs://a          a file of a memory file system
//   clouddisk://web    a disk of a cloud machine, by its alias
//   dummy://{…}        a dummy target

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include <boost/shared_ptr.hpp>
#include <boost/thread/recursive_mutex.hpp>
#include <boost/weak_ptr.hpp>

#include "nelvo/io/dev_pool.h"
#include "nelvo/io/io_dev.h"

namespace io
{

// Makes the readers and writers of one type.
class io_dev_factory_t
{
public:
    virtual ~io_dev_factory_t() = default;
    // A new device for the path, whose form the factory says.
    virtual boost::shared_ptr<io_dev_t> Create(const std::string& path) = 0;
};

class dev_registry_t
{
public:
    static constexpr std::uint32_t kMaxPoolId = 0x7FFFFFFE;

    // The greatest pool id that is found free; at most kMaxPoolId.
    explicit dev_registry_t(std::uint32_t last_pool_id = kMaxPoolId) : m_last_pool_id(last_pool_id) {}

    // Replaces the factory of the type.
    void AddFactory(const std::string& type, const boost::shared_ptr<io_dev_factory_t>& factory);

    // Throws exc::runtime_exc_t with "There is no factory for the specified type of reader/writer: '<type>'."
    boost::shared_ptr<io_dev_factory_t> GetFactory(const std::string& type) const;

    // The registry does not keep the pool alive, but the id stays taken. Replaces the pool of the id.
    void AddPool(std::uint32_t id, const boost::shared_ptr<io_dev_pool_t>& pool);

    // Throws exc::runtime_exc_t with "Unable to find connections pool by id: <id>." or, if only the pool
    // itself is gone, with "Connections pool [<id>] has already been destroyed."
    boost::shared_ptr<io_dev_pool_t> GetPool(std::uint32_t id) const;

    // The lowest free id from 1 or from the given one on, up to the last; it is not taken by that. Without
    // one, exc::runtime_exc_t with "Cannot find free pool id." or "Cannot find free pool id ( check started
    // from pool id '<start>')."
    std::uint32_t AllocPoolId() const;
    std::uint32_t FindFreePoolId(std::uint32_t start) const;

    // Frees all ids.
    void RemovePools();

    // Stores the path under the alias, as it is written. An alias that doesn't begin with "clouddisk://", in
    // any case, is exc::runtime_exc_t with "Invalid cloud alias prefix: <alias>"; the log line on it has been
    // written by then.
    // Kept: DevRegistry.RefusedCloudAliasHasBeenLogged
    void SetCloudAliasPath(const std::string& alias, const std::string& path);

    // Stores the path under the prefix and logs it.
    void SetPrefixPath(const std::string& path, const std::string& prefix);

    // SetPrefixPath with "dummy://" and a new GUID, which it returns.
    std::string AddDummyPrefix(const std::string& path);

    // The path of a prefix or alias, letter by letter; empty if there is none.
    std::string FindPrefixPath(const std::string& prefix) const;

private:
    std::optional<std::uint32_t> LowestFreePoolId(std::uint32_t start) const;

    const std::uint32_t m_last_pool_id;
    mutable boost::recursive_mutex m_mutex; // guards all that follows
    std::map<std::string, boost::shared_ptr<io_dev_factory_t>> m_factories;
    std::map<std::uint32_t, boost::weak_ptr<io_dev_pool_t>> m_pools;
    std::map<std::string, std::string> m_prefixes;
};

// "MemFs://" and the path. A path that util::IsRelativeName does not take for relative, one with a separator
// in it or with a dot in front, is exc::runtime_exc_t with "[<path>] is not a relative path."
//
// Kept: DevRegistry.MemFsPathWithASeparatorIsRefused
std::string MakeMemFsPath(const std::string& relative_path);

} // namespace io
