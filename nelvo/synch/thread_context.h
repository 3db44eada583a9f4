#pragma once

// What belongs to a thread and is reached from anywhere on it, without an argument. The context of a thread
// that synch::thread_t started has its creator's as parent; two settings are looked up along this chain. A
// context keeps all its ancestors alive, also when their threads have ended.

#include <atomic>

#include <boost/shared_ptr.hpp>
#include <boost/thread/recursive_mutex.hpp>
#include <boost/thread/thread.hpp>

namespace synch
{

class CThreadContext
{
public:
    using owner_id_t = boost::shared_ptr<boost::thread::id>;

    CThreadContext() = default;
    ~CThreadContext();
    CThreadContext(const CThreadContext&) = delete;
    CThreadContext& operator=(const CThreadContext&) = delete;

    // The calling thread's. The first call in a thread makes one without a parent, and the end of the thread,
    // or the exit of the process on it, gives it up.
    static boost::shared_ptr<CThreadContext> GetCurrent();

    // Before others look at the context. A chain must not become a ring.
    void SetParent(const boost::shared_ptr<CThreadContext>& parent);

    // Whether the memory file system is switched off here or in an ancestor; it can't be switched on again.
    // No lock: another thread sees the change at some later time.
    void DisableMemFs();
    bool IsMemFsDisabled() const;

    // The id set here, or else the nearest ancestor's; empty if there is none. The mutex of each context on
    // the way is held until the end, the child's first.
    void SetOwnerThread(const boost::thread::id& id);
    void ResetOwnerThread();
    owner_id_t GetOwnerThread() const;

private:
    class chain_lock_t;

    boost::shared_ptr<CThreadContext> m_parent;
    std::atomic<bool> m_memFsDisabled{false};
    mutable boost::recursive_mutex m_mutex; // of the owner's id alone
    owner_id_t m_ptr_owner_thread_id;
};

// What the slot of a thread holds.
struct SSmartPointerContainer
{
    boost::shared_ptr<CThreadContext> context;
};

} // namespace synch
