#include "nelvo/synch/thread_context.h"

#include <cstdlib>
#include <memory>
#include <utility>

#include <boost/make_shared.hpp>
#include <boost/thread/lock_guard.hpp>
#include <boost/thread/tss.hpp>

namespace synch
{
namespace
{

using lock_t = boost::lock_guard<boost::recursive_mutex>;
using slot_t = boost::thread_specific_ptr<SSmartPointerContainer>;

// Never destroyed: calls may come as late as they like. A full table of exit handlers leaves the context of
// the exiting thread to the end of the process. The handler comes second: without a slot, for want of memory,
// it would try to make one at exit, where the failure ends the process.
slot_t& Slot()
{
    static slot_t& slot = []() -> slot_t&
    {
        slot_t& made = *new slot_t;
        static_cast<void>(std::atexit([] { Slot().reset(); }));
        return made;
    }();
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
    slot_t& slot = Slot();
    if (const SSmartPointerContainer* const held = slot.get())
        return held->context;
    auto made = std::make_unique<SSmartPointerContainer>();
    made->context = boost::make_shared<CThreadContext>();
    slot.reset(made.get());
    return made.release()->context;
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

// The mutexes of a context and its ancestors, as far as they have been asked for.
class CThreadContext::chain_lock_t
{
public:
    explicit chain_lock_t(const CThreadContext& child) : m_child(&child) {}
    ~chain_lock_t()
    {
        for (const CThreadContext* context = m_child; context != m_next; context = context->m_parent.get())
            context->m_mutex.unlock();
    }
    chain_lock_t(const chain_lock_t&) = delete;
    chain_lock_t& operator=(const chain_lock_t&) = delete;

    // The next context of the chain, locked; null behind the last.
    const CThreadContext* Next()
    {
        const CThreadContext* const context = m_next;
        if (context != nullptr)
        {
            context->m_mutex.lock();
            m_next = context->m_parent.get();
        }
        return context;
    }

private:
    const CThreadContext* m_child;
    const CThreadContext* m_next = m_child;
};

CThreadContext::owner_id_t CThreadContext::GetOwnerThread() const
{
    chain_lock_t lock(*this);
    while (const CThreadContext* const context = lock.Next())
        if (context->m_ptr_owner_thread_id != nullptr)
            return context->m_ptr_owner_thread_id;
    return nullptr;
}

} // namespace synch
