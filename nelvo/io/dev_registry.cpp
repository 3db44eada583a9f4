#include "nelvo/io/dev_registry.h"

#include <boost/thread/lock_guard.hpp>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/guid.h"
#include "nelvo/core/util/path_text.h"
#include "nelvo/core/util/text.h"
#include "nelvo/logging/channels.h"

namespace io
{
namespace
{

using lock_t = boost::lock_guard<boost::recursive_mutex>;

constexpr std::uint32_t kFirstPoolId = 1;

} // namespace

void dev_registry_t::AddFactory(const std::string& type, const boost::shared_ptr<io_dev_factory_t>& factory)
{
    const lock_t lock(m_mutex);
    m_factories[type] = factory;
}

boost::shared_ptr<io_dev_factory_t> dev_registry_t::GetFactory(const std::string& type) const
{
    const lock_t lock(m_mutex);
    const auto found = m_factories.find(type);
    if (found == m_factories.end())
        throw exc::runtime_exc_t("There is no factory for the specified type of reader/writer: '%1'.", type);
    return found->second;
}

void dev_registry_t::AddPool(std::uint32_t id, const boost::shared_ptr<io_dev_pool_t>& pool)
{
    const lock_t lock(m_mutex);
    m_pools[id] = pool;
}

boost::shared_ptr<io_dev_pool_t> dev_registry_t::GetPool(std::uint32_t id) const
{
    const lock_t lock(m_mutex);
    const auto found = m_pools.find(id);
    if (found == m_pools.end())
        throw exc::runtime_exc_t("Unable to find connections pool by id: %1.", id);
    auto pool = found->second.lock();
    if (pool == nullptr)
        throw exc::runtime_exc_t("Connections pool [%1] has already been destroyed.", id);
    return pool;
}

std::uint32_t dev_registry_t::AllocPoolId() const
{
    const auto id = LowestFreePoolId(kFirstPoolId);
    if (!id)
        throw exc::runtime_exc_t("Cannot find free pool id.");
    return *id;
}

std::uint32_t dev_registry_t::FindFreePoolId(std::uint32_t start) const
{
    const auto id = LowestFreePoolId(start);
    if (!id)
        throw exc::runtime_exc_t("Cannot find free pool id ( check started from pool id '%1').", start);
    return *id;
}

// One walk along the taken ids, which the map has in order.
std::optional<std::uint32_t> dev_registry_t::LowestFreePoolId(std::uint32_t start) const
{
    const lock_t lock(m_mutex);
    std::uint32_t id = start;
    if (start <= m_last_pool_id)
        for (auto taken = m_pools.lower_bound(start); taken != m_pools.end() && taken->first == id; ++taken)
            ++id;
    return id <= m_last_pool_id ? std::optional(id) : std::nullopt;
}

void dev_registry_t::RemovePools()
{
    const lock_t lock(m_mutex);
    m_pools.clear();
}

void dev_registry_t::SetCloudAliasPath(const std::string& alias, const std::string& path)
{
    const lock_t lock(m_mutex);
    logging::channels::default_log.info("Setting cloud VM alias [%1] for path [%2].", alias, path);
    if (!util::StartsWithNoCase(alias, "clouddisk://"))
        throw exc::runtime_exc_t("Invalid cloud alias prefix: %1", alias);
    m_prefixes[alias] = path;
}

void dev_registry_t::SetPrefixPath(const std::string& path, const std::string& prefix)
{
    const lock_t lock(m_mutex);
    logging::channels::default_log.info("Setting path [%1] for prefix [%2].", path, prefix);
    m_prefixes[prefix] = path;
}

std::string dev_registry_t::AddDummyPrefix(const std::string& path)
{
    std::string prefix = "dummy://" + Guid::Generate().ToString();
    SetPrefixPath(path, prefix);
    return prefix;
}

std::string dev_registry_t::FindPrefixPath(const std::string& prefix) const
{
    const lock_t lock(m_mutex);
    const auto found = m_prefixes.find(prefix);
    return found != m_prefixes.end() ? found->second : std::string();
}

std::string MakeMemFsPath(const std::string& relative_path)
{
    if (!util::IsRelativeName(relative_path))
        throw exc::runtime_exc_t("[%1] is not a relative path.", relative_path);
    return "MemFs://" + relative_path;
}

} // namespace io
