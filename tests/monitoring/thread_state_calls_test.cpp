// What a dump to a file asks of the permissions and of the system, and what the table lets others do
// meanwhile. The calls below stand in the place of the C library's: each notes the call, then does what the
// test asked for.

#include <cerrno>
#include <cstdarg>
#include <functional>
#include <future>
#include <string>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "nelvo/context/common_lib_ctx.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/str.h"
#include "nelvo/logging/log.h"
#include "nelvo/monitoring/thread_state.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/placed_thread.h"
#include "tests/support/temp_folder.h"

namespace
{

using calls_t = std::vector<std::string>;
using monitoring::CThreadState;

struct record_t
{
    calls_t calls;
    std::function<void(const std::string&)> hook;
};

// Null while nobody listens.
record_t* g_record = nullptr;

// What is done when the calling thread has to wait for a mutex.
thread_local const std::function<void()>* g_on_wait = nullptr;

// What a hook does itself is not noted.
void Note(const std::string& call)
{
    record_t* const record = std::exchange(g_record, nullptr);
    if (record == nullptr)
        return;
    record->calls.push_back(call);
    if (record->hook)
        record->hook(call);
    g_record = record;
}

class noting_permissions_t : public security::IFilesAccessPermissions
{
public:
    void CheckAccess(const util::str_t& path) override { Note("ask " + path.narrow()); }
};

} // namespace

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept
{
    // The function that stands behind this program's: the C library's, or a sanitizer's.
    static auto* const real =
        reinterpret_cast<decltype(&pthread_mutex_lock)>(::dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    if (g_on_wait == nullptr)
        return real(mutex);
    const int result = ::pthread_mutex_trylock(mutex);
    if (result != EBUSY)
        return result;
    (*std::exchange(g_on_wait, nullptr))();
    return real(mutex);
}

extern "C" int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = va_arg(arguments, unsigned);
    va_end(arguments);
    Note(std::string("open ") + path);
    return static_cast<int>(::syscall(SYS_open, path, flags, mode));
}

extern "C" int ftruncate64(int descriptor, off64_t size) noexcept
{
    Note("cut to " + std::to_string(size));
    return static_cast<int>(::syscall(SYS_ftruncate, descriptor, size));
}

extern "C" ssize_t write(int descriptor, const void* data, std::size_t size)
{
    const int before = errno;
    errno = 0;
    Note("write " + std::to_string(size));
    if (errno != 0)
        return -1;
    errno = before;
    return ::syscall(SYS_write, descriptor, data, size);
}

extern "C" int close(int descriptor)
{
    Note("close");
    return static_cast<int>(::syscall(SYS_close, descriptor));
}

namespace
{

class ThreadStateCalls : public testing::Test
{
protected:
    ThreadStateCalls()
    {
        GetCommonLibCtx()->SetFilesAccessPermissions(boost::make_shared<noting_permissions_t>());
        WriteFile(m_trace, "old");
        m_table.SetTraceFile(m_folder / "run");
        // Both take more than one piece of a text.
        m_table.Add(StateAt(kBelow2To31, std::string(1972, 'a')));
        m_table.Add(StateAt(kBelow2To31 + 0x1000'0000, std::string(2972, 'b')));
    }

    ~ThreadStateCalls() override { GetCommonLibCtx()->SetFilesAccessPermissions(m_permissions); }

    // Of a thread with an id of ten digits that has ended since.
    static boost::shared_ptr<CThreadState> StateAt(std::uintptr_t address, const std::string& role)
    {
        boost::shared_ptr<CThreadState> state;
        RunOnThreadAt(address, [&] { state = boost::make_shared<CThreadState>(role); });
        return state;
    }

    calls_t CallsOfDump(const std::function<void(const std::string&)>& hook = {})
    {
        record_t record;
        record.hook = hook;
        g_record = &record;
        try
        {
            m_table.DumpToFile();
        }
        catch (const exc::exc_base_t& e)
        {
            m_failure = e.what();
        }
        g_record = nullptr;
        return record.calls;
    }

    // Whether another thread has to wait for the table now. It then does so until the dump has ended.
    bool IsTableHeld()
    {
        const auto held = boost::make_shared<std::promise<bool>>();
        m_users.push_back(std::async(std::launch::async,
                                     [this, held]
                                     {
                                         std::function<void()> tell = [&] { held->set_value(true); };
                                         g_on_wait = &tell;
                                         m_table.GetCurrentState();
                                         if (std::exchange(g_on_wait, nullptr) != nullptr)
                                             held->set_value(false);
                                     }));
        return held->get_future().get();
    }

    const boost::shared_ptr<security::IFilesAccessPermissions> m_permissions =
        GetCommonLibCtx()->GetFilesAccessPermissions();
    temp_folder_t m_folder;
    const std::string m_trace = m_folder / "run.trace";
    monitoring::CThreadStatesCollection m_table;
    std::vector<std::future<void>> m_users;
    std::string m_failure;
};

} // namespace

TEST_F(ThreadStateCalls, FileIsAskedForOpenedCutAndWrittenOnceForEachThread)
{
    EXPECT_EQ((calls_t{"ask " + m_trace, "ask " + m_trace, "open " + m_trace, "cut to 0", "write 2000",
                       "write 3000", "close"}),
              CallsOfDump());
    EXPECT_EQ(5000u, ReadFile(m_trace).size());
}

TEST_F(ThreadStateCalls, MissingFileIsOnlyAskedFor)
{
    ASSERT_EQ(0, ::unlink(m_trace.c_str()));
    EXPECT_EQ(calls_t{"ask " + m_trace}, CallsOfDump());
}

TEST_F(ThreadStateCalls, EmptyNameIsOnlyAskedFor)
{
    m_table.SetTraceFile("");
    EXPECT_EQ(calls_t{"ask "}, CallsOfDump());
}

TEST_F(ThreadStateCalls, TableIsHeldFromBehindTheQuestionUntilTheFileIsClosed)
{
    calls_t calls;
    CallsOfDump([&](const std::string& call)
                { calls.push_back((IsTableHeld() ? "held: " : "free: ") + call.substr(0, call.find(' '))); });
    EXPECT_EQ((calls_t{"free: ask", "held: ask", "held: open", "held: cut", "held: write", "held: write",
                       "held: close"}),
              calls);
}

TEST_F(ThreadStateCalls, TableIsHeldWhileALogDumpIsWritten)
{
    const auto log = boost::make_shared<lines_receiver_t>();
    std::vector<bool> held;
    log->set_hook([&] { held.push_back(IsTableHeld()); });
    logging::GetProcessLog()->set_receiver(log);
    m_table.DumpToLog();
    logging::GetProcessLog()->set_receiver({});
    EXPECT_EQ((std::vector<bool>{true, true}), held);
    EXPECT_FALSE(IsTableHeld());
}

TEST_F(ThreadStateCalls, FileThatGoesAfterTheQuestionIsAFailureAndNotCreated)
{
    int asked = 0;
    CallsOfDump(
        [&](const std::string& call)
        {
            if (call.rfind("ask", 0) == 0 && ++asked == 2)
                ::unlink(m_trace.c_str());
        });
    EXPECT_EQ("No such file or directory\nPOSIX: Failed to open file [" + m_trace +
                  "] for read/write access.",
              m_failure);
    EXPECT_NE(0, ::access(m_trace.c_str(), F_OK));
    EXPECT_FALSE(IsTableHeld());
}

TEST_F(ThreadStateCalls, FailureToWriteEndsTheDumpAndFreesTheTable)
{
    int writes = 0;
    EXPECT_EQ(
        (calls_t{"ask " + m_trace, "ask " + m_trace, "open " + m_trace, "cut to 0", "write 2000", "close"}),
        CallsOfDump(
            [&](const std::string& call)
            {
                if (call.rfind("write", 0) == 0 && ++writes == 1)
                    errno = ENOSPC;
            }));
    EXPECT_EQ("No space left on device\nPOSIX: Failed to write data to the file [" + m_trace + "].",
              m_failure);
    EXPECT_EQ("", ReadFile(m_trace));
    EXPECT_FALSE(IsTableHeld());
}

TEST_F(ThreadStateCalls, RefusedPathIsAFailureAndLeavesTheTableFree)
{
    EXPECT_EQ(calls_t{"ask " + m_trace},
              CallsOfDump([](const std::string&) { throw exc::runtime_exc_t("refused"); }));
    EXPECT_EQ("refused", m_failure);
    EXPECT_FALSE(IsTableHeld());
}
