#pragma once

// What the threads of the process are doing, and since when. A thread that synch::thread_t started has a
// state with its role and a stack of marks; progress scopes push and pop the marks; the table of all states
// can be written to the log or to a trace file.
//
//   Thread: 139872. Role: backup.
//       Function: Reading volumes. Time: 12 seconds ago.
//
// A stack of marks belongs to its thread and has no lock. A dump that another thread makes while the marks
// move reads them all the same: it is a snapshot for diagnosis, and a process must not depend on it.

#include <atomic>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <boost/thread/recursive_mutex.hpp>

#include "nelvo/posix/posix_file_fwd.h"

namespace monitoring
{

// A mark: what a thread has begun.
class CThreadTrace
{
public:
    // Begins now (GetTickMs).
    explicit CThreadTrace(std::string function);

    // The text of the mark.
    const std::string& GetFunction() const { return m_function; }

    // Whole seconds since the beginning, by the difference of two ticks: an age is right modulo 2^32 ms.
    std::uint32_t GetAgeSeconds() const;

private:
    std::uint32_t m_startTick;
    std::string m_function;
};

class CThreadState
{
public:
    // Of the calling thread.
    explicit CThreadState(std::string role);

    // Both only on the state's own thread. PopTrace takes away the newest mark; there must be one.
    void PushTrace(std::string function);
    void PopTrace();

    // One message for the thread and one for each mark, oldest first, on the default channel. Defined in
    // thread_dump.cpp, which stands above the log and the files. The id is the low half of the thread's, as a
    // signed number.
    // Kept: ThreadState.LogDumpPrintsTheLowHalfOfTheIdAsASignedNumber
    void DumpToLog() const;

    // The same lines in one write to the file, each ended by CR LF, and the first without its full stop. The
    // id is whole, as an unsigned number. Throws what posix_file_t::WriteBytes throws. Defined in
    // thread_dump.cpp.
    void DumpToFile(const posix_file_ptr_t& file) const;

    // What the state was made with: the role, and pthread_self() of the thread that made it.
    const std::string& GetRole() const { return m_role; }
    std::uint64_t GetThreadId() const { return m_threadId; }

    // The low half of the id, which makes another number of most ids on a 64-bit system.
    std::int32_t GetShortThreadId() const { return static_cast<std::int32_t>(m_threadId); }

private:
    std::string m_role;
    std::uint64_t m_threadId; // pthread_self()
    std::vector<boost::shared_ptr<CThreadTrace>> m_traces;
};

// The table of all states. Any thread may use it at any time. Its mutex is recursive and is held while a dump
// is written: whoever holds the log must not wait for a thread that waits for the table, nor open a progress
// scope, which asks for the table.
class CThreadStatesCollection
{
public:
    // The one of the process (process_instance.h). Throws what boost::recursive_mutex's constructor throws;
    // the next call tries again then.
    static boost::shared_ptr<CThreadStatesCollection> GetInstance();

    // Replaces what stands under the state's thread id.
    void Add(const boost::shared_ptr<CThreadState>& state);

    // Looks for the low half of the id, widened with its sign, while Add stores the whole. An id of 2^31 or
    // more isn't found: the state of a finished thread stays, with its marks, and stands in each dump, until
    // a later thread has the same id. A thread whose id is the number looked for loses its state instead.
    // Kept: ThreadStatesCollection.RemoveMissesIdsBeyond32Bits
    void Remove(const boost::shared_ptr<CThreadState>& state);

    // The calling thread's state; empty if it has none.
    boost::shared_ptr<CThreadState> GetCurrentState() const;

    // ".trace" is appended to the name; the empty name stays empty and turns file dumps off. Waits for a dump
    // that is being written.
    void SetTraceFile(const std::string& name);

    // All states, in the order of their ids. The trace file is never created: if none is there, nothing is
    // done, at once; otherwise the dump replaces what it holds. Throws what util::FileExists and posix_file_t
    // throw. Defined in thread_dump.cpp.
    // Kept: ThreadStatesCollection.DumpNeverCreatesTheTraceFile
    void DumpToFile() const;
    void DumpToLog() const;

    // Whether starts and ends of threads are logged; they are, unless told otherwise. Takes no lock.
    void SetLoggingEnabled(bool enabled) { m_loggingEnabled.store(enabled, std::memory_order_relaxed); }
    bool IsLoggingEnabled() const { return m_loggingEnabled.load(std::memory_order_relaxed); }

private:
    std::string GetTraceFile() const;

    mutable boost::recursive_mutex m_mutex;
    std::map<std::uint64_t, boost::shared_ptr<CThreadState>> m_states;
    std::string m_traceFile;
    mutable boost::mutex m_traceFileMutex; // of the name alone, so that reading it waits for no dump
    std::atomic<bool> m_loggingEnabled{true};
};

// Push and pop a mark of the calling thread, if it has a state. The two look the state up anew: a thread must
// not get, lose or change its state between a push and its pop.
void PushThreadMark(const std::string& function);
void PopThreadMark();

} // namespace monitoring
