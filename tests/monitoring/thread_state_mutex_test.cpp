#include "nelvo/monitoring/thread_state.h"

#include <algorithm>
#include <cerrno>

#include <boost/make_shared.hpp>

#include "nelvo/core/util/process_instance.h"
#include "nelvo/posix/posix_file.h"
#include "tests/support/pthread_calls.h"
#include "tests/support/temp_folder.h"

namespace
{

using monitoring::CThreadStatesCollection;

class ThreadStatesCollectionMutex : public PthreadCalls
{
protected:
    // What the next use says, if it is the first.
    std::string FailureOfFirstUse(const std::string& call, int error)
    {
        Answer(call, error);
        m_calls = Calls([] { CThreadStatesCollection::GetInstance(); });
        return failure();
    }

    calls_t m_calls;
};

} // namespace

// One case, since a process has one first use. The first lock shows that its mutex is there before it.
TEST_F(ThreadStatesCollectionMutex, TableThatCannotBeMadeIsAFailureAndTheNextUseTriesAgain)
{
    const std::string failure = "boost:: recursive_mutex constructor failed in pthread_";
    EXPECT_EQ(failure + "mutexattr_init: Cannot allocate memory (generic 12)",
              FailureOfFirstUse("mutexattr_init", ENOMEM));
    EXPECT_EQ((calls_t{"lock", "mutexattr_init", "unlock"}), m_calls);
    EXPECT_EQ(failure + "mutexattr_settype: Invalid argument (generic 22)",
              FailureOfFirstUse("mutexattr_settype", EINVAL));
    EXPECT_EQ(failure + "mutex_init: Resource temporarily unavailable (generic 11)",
              FailureOfFirstUse("mutex_init", EAGAIN));
    EXPECT_EQ((calls_t{"lock", "mutexattr_init", "mutexattr_settype(recursive)", "mutex_init of some kind",
                       "unlock"}),
              m_calls);
    ASSERT_NE(nullptr, CThreadStatesCollection::GetInstance());
    EXPECT_EQ(nullptr, CThreadStatesCollection::GetInstance()->GetCurrentState());
    EXPECT_EQ((calls_t{"lock", "unlock"}), Calls([] { CThreadStatesCollection::GetInstance(); }));
}

TEST_F(ThreadStatesCollectionMutex, FirstUseIsUnderARecursiveOne)
{
    struct object_t
    {
    };
    EXPECT_EQ((calls_t{"mutexattr_init", "mutexattr_settype(recursive)", "mutex_init of some kind"}),
              Calls([] { util::process_instance_tt<object_t>::Prepare(); }));
}

TEST_F(ThreadStatesCollectionMutex, EachOperationButThoseOfTheLoggingFlagHoldsIt)
{
    const auto table = boost::make_shared<CThreadStatesCollection>();
    const auto state = boost::make_shared<monitoring::CThreadState>("backup");
    const void* const mutex = Locked([&] { table->Remove(state); }).at(0);
    const std::function<void()> operations[] = {[&] { table->Add(state); }, [&] { table->GetCurrentState(); },
                                                [&] { table->Remove(state); }, [&] { table->DumpToLog(); }};
    for (const auto& operation : operations)
        EXPECT_EQ(mutex, Locked(operation).at(0));
    EXPECT_EQ(mutex, Locked([&] { table->SetTraceFile("run"); }).at(0));
    EXPECT_EQ((calls_t{"lock", "lock", "unlock", "unlock"}), Calls([&] { table->SetTraceFile("run"); }));
    EXPECT_EQ(calls_t(), Calls([&] { table->SetLoggingEnabled(!table->IsLoggingEnabled()); }));
}

// The first dump makes the counter of the thread's writes.
TEST_F(ThreadStatesCollectionMutex, EachMarkOfAFileDumpReadsTheClockItself)
{
    const temp_folder_t folder;
    const std::string path = folder / "state";
    WriteFile(path, "");
    const posix_file_ptr_t file = posix::posix_file_t::OpenReadWrite(path);
    monitoring::CThreadState state("backup");
    state.PushTrace("a");
    state.PushTrace("b");
    state.DumpToFile(file);
    const calls_t calls = Calls([&] { state.DumpToFile(file); });
    EXPECT_EQ(2, std::count(calls.begin(), calls.end(), "gettimeofday"));
}

// Each mark is the business of its thread.
TEST_F(ThreadStatesCollectionMutex, MarksTakeNoLock)
{
    monitoring::CThreadState state("backup");
    EXPECT_EQ(calls_t{"gettimeofday"}, Calls([&] { state.PushTrace("a"); }));
    EXPECT_EQ(calls_t(), Calls([&] { state.PopTrace(); }));
}
