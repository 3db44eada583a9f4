#include "nelvo/synch/thread_context.h"

#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/thread/lock_guard.hpp>
#include <boost/thread/locks.hpp>
#include <boost/thread/tss.hpp>

namespace synch
{
namespace
{

using lock_t = boost::lock_guard<boost::recursive_mutex>;

boost::thread_specific_ptr<SSmartPointerContainer>& Slot()
{
    static boost::thread_specific_ptr<SSmartPointerContainer> slot;
    return slot;
}

} // namespace

// Ancestors that nobody else holds go one by one: a chain may be longer than the stack is deep.
CThreadContext::~CThreadContext()
{
    boost::shared_ptr<CThreadContext> last = std::move(m_parent);
    while (last != nullptr && last.unique())
        last = std::exchange(last->m_parent, nullptr);
}

boost::shared_ptr<CThreadContext> CThreadContext::GetCurrent()
{
    auto& slot = Slot();
    if (slot.get() == nullptr)
        slot.reset(new SSmartPointerContainer{boost::make_shared<CThreadContext>()});
    return slot->context;
}

void CThreadContext::SetParent(const boost::shared_ptr<CThreadContext>& parent) { m_parent = parent; }

void CThreadContext::DisableMemFs() { m_memFsDisabled.store(true, std::memory_order_relaxed); }

bool CThreadContext::IsMemFsDisabled() const
{
    const CThreadContext* context = this;
    while (!context->m_memFsDisabled.load(std::memory_order_relaxed) && context->m_parent != nullptr)
        context = context->m_parent.get();
    return context->m_memFsDisabled.load(std::memory_order_relaxed);
}

void CThreadContext::SetOwnerThread(const boost::thread::id& id)
{
    const lock_t lock(m_mutex);
    m_ptr_owner_thread_id = boost::make_shared<boost::thread::id>(id);
}

void CThreadContext::ResetOwnerThread()
{
    const lock_t lock(m_mutex);
    m_ptr_owner_thread_id.reset();
}

CThreadContext::owner_id_t CThreadContext::GetOwnerThread() const
{
    std::vector<boost::unique_lock<boost::recursive_mutex>> locks;
    for (const CThreadContext* context = this; context != nullptr; context = context->m_parent.get())
    {
        locks.emplace_back(context->m_mutex);
        if (context->m_ptr_owner_thread_id != nullptr)
            return context->m_ptr_owner_thread_id;
    }
    return nullptr;
}

} // namespace synch
