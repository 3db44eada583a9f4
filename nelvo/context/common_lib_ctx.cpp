#include "nelvo/context/common_lib_ctx.h"

#include <boost/make_shared.hpp>
#include <boost/thread/lock_guard.hpp>

#include "nelvo/core/util/process_instance.h"
#include "nelvo/logging/channels.h"
#include "nelvo/logging/progress_scope.h"

namespace
{

using lock_t = boost::lock_guard<boost::mutex>;

} // namespace

CCommonLibCtx::CCommonLibCtx()
    : m_key_store(boost::make_shared<crypto::CRuntimeKeyStore>()),
      m_permissions(boost::make_shared<security::CUnrestrictedFilesAccessPermissions>()),
      m_dev_pools({{0, boost::make_shared<io::io_dev_pool_t>()}})
{
}

void CCommonLibCtx::CheckAccess(const util::str_t& path)
{
    const lock_t lock(m_access_mutex);
    m_permissions->CheckAccess(path);
}

// The former permissions end with the argument, when the mutex is free again.
void CCommonLibCtx::SetFilesAccessPermissions(
    boost::shared_ptr<security::IFilesAccessPermissions> permissions)
{
    const lock_t lock(m_access_mutex);
    m_permissions.swap(permissions);
}

boost::shared_ptr<security::IFilesAccessPermissions> CCommonLibCtx::GetFilesAccessPermissions() const
{
    const lock_t lock(m_access_mutex);
    return m_permissions;
}

boost::shared_ptr<io::io_dev_pool_t> CCommonLibCtx::FindDevPool(std::uint32_t key) const
{
    const auto found = m_dev_pools.find(key);
    return found != m_dev_pools.end() ? found->second : nullptr;
}

void CCommonLibCtx::DestroyConnectionPools()
{
    progress_scope_t scope(logging::channels::default_log, "Destroying connection pools.");
    m_dev_registry.RemovePools();
    scope.close_quietly();
}

boost::shared_ptr<CCommonLibCtx> GetCommonLibCtx()
{
    return util::process_instance_tt<CCommonLibCtx, boost::mutex>::Get(
        [] { return boost::make_shared<CCommonLibCtx>(); });
}
