#include "nelvo/monitoring/thread_state.h"

#include <chrono>
#include <future>
#include <stdexcept>
#include <string>
#include <type_traits>

#include <boost/make_shared.hpp>
#include <boost/thread/thread.hpp>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/util/format.h"
#include "nelvo/logging/channels.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/progress_scope.h"
#include "nelvo/posix/posix_file.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/placed_thread.h"
#include "tests/support/set_clock.h"
#include "tests/support/temp_folder.h"

namespace
{

using monitoring::CThreadState;
using monitoring::CThreadStatesCollection;
using state_ptr_t = boost::shared_ptr<CThreadState>;

constexpr std::int64_t kMillisecond = 1'000'000; // nanoseconds

// Places for threads, in the order of their ids.
constexpr std::uintptr_t kFirst = kBelow2To31;
constexpr std::uintptr_t kSecond = kBelow2To31 + 0x1000'0000;
constexpr std::uintptr_t kThird = kBelow2To31 + 0x2000'0000;

// What is not done by then never will be. Nobody waits that long for what is.
constexpr std::chrono::seconds kPatience{20};

class Dumps : public testing::Test
{
protected:
    Dumps() { logging::GetProcessLog()->set_receiver(m_log); }

    ~Dumps() override { logging::GetProcessLog()->set_receiver({}); }

    // The lines of the log, without the default channel's empty column.
    std::string TakeLogged()
    {
        std::string lines;
        for (const std::string& message : m_log->messages())
        {
            const std::string line = WithoutHeads(message);
            EXPECT_EQ("       | ", line.substr(0, 9));
            lines += line.substr(9);
        }
        m_log = boost::make_shared<lines_receiver_t>();
        logging::GetProcessLog()->set_receiver(m_log);
        return lines;
    }

    std::string InFile(const CThreadState& state) const
    {
        const std::string path = m_folder / "state";
        WriteFile(path, "");
        state.DumpToFile(posix::posix_file_t::OpenReadWrite(path));
        return ReadFile(path);
    }

    set_clock_t m_clock{1'700'000'000};
    temp_folder_t m_folder;
    boost::shared_ptr<lines_receiver_t> m_log = boost::make_shared<lines_receiver_t>();
};

class ThreadState : public Dumps
{
};

class ThreadStatesCollection : public Dumps
{
protected:
    ThreadStatesCollection() { m_table.SetTraceFile(m_folder / "run"); }

    // Of a thread that has ended since.
    static state_ptr_t StateAt(std::uintptr_t address, const std::string& role)
    {
        state_ptr_t state;
        RunOnThreadAt(address, [&] { state = boost::make_shared<CThreadState>(role); });
        return state;
    }

    static std::uint64_t IdAt(std::uintptr_t address) { return StateAt(address, "")->GetThreadId(); }

    // The roles in a log dump.
    std::string Listed()
    {
        std::string roles;
        m_table.DumpToLog();
        for (const std::string& line : m_log->messages())
        {
            const std::size_t begin = line.find(". Role: ") + 8;
            roles += line.substr(begin, line.rfind('.') - begin) + ' ';
        }
        TakeLogged();
        return roles;
    }

    // What a file dump writes.
    std::string Dumped() const
    {
        WriteFile(m_trace, "");
        m_table.DumpToFile();
        return ReadFile(m_trace);
    }

    std::string FailureOfDump() const
    {
        try
        {
            m_table.DumpToFile();
        }
        catch (const posix::errno_exc_t& e)
        {
            return e.what();
        }
        return "no failure";
    }

    // Whether another thread may use the table now.
    bool IsFree() const
    {
        auto user = std::async(std::launch::async, [this] { m_table.GetCurrentState(); });
        return user.wait_for(kPatience) == std::future_status::ready;
    }

    CThreadStatesCollection m_table;
    const std::string m_trace = m_folder / "run.trace";
};

std::string ThisThread() { return util::Format("%1", pthread_self()); }

} // namespace

TEST_F(ThreadState, KeepsRoleAndIdOfItsThread)
{
    const CThreadState state("backup");
    EXPECT_EQ("backup", state.GetRole());
    EXPECT_EQ(pthread_self(), state.GetThreadId());
    static_assert(!std::is_polymorphic_v<monitoring::CThreadTrace> && !std::is_polymorphic_v<CThreadState> &&
                  !std::is_polymorphic_v<CThreadStatesCollection>);
}

TEST_F(ThreadState, WithoutMarksHasOneLine)
{
    RunOnThreadAt(kFirst,
                  [this]
                  {
                      const CThreadState state("backup");
                      state.DumpToLog();
                      EXPECT_EQ("Thread: " + ThisThread() + ". Role: backup.\n", TakeLogged());
                      EXPECT_EQ("Thread: " + ThisThread() + ". Role: backup\r\n", InFile(state));
                  });
}

TEST_F(ThreadState, MarksStandOldestFirst)
{
    RunOnThreadAt(kFirst,
                  [this]
                  {
                      CThreadState state("backup");
                      state.PushTrace("Reading volumes");
                      m_clock.Advance(12'000 * kMillisecond);
                      state.PushTrace("Opening /dev/sda");
                      m_clock.Advance(3'000 * kMillisecond);
                      state.DumpToLog();
                      EXPECT_EQ("Thread: " + ThisThread() +
                                    ". Role: backup.\n"
                                    "    Function: Reading volumes. Time: 15 seconds ago.\n"
                                    "    Function: Opening /dev/sda. Time: 3 seconds ago.\n",
                                TakeLogged());
                      EXPECT_EQ("Thread: " + ThisThread() +
                                    ". Role: backup\r\n"
                                    "    Function: Reading volumes. Time: 15 seconds ago.\r\n"
                                    "    Function: Opening /dev/sda. Time: 3 seconds ago.\r\n",
                                InFile(state));
                  });
}

TEST_F(ThreadState, PopTakesTheNewestMark)
{
    CThreadState state("");
    state.PushTrace("a");
    state.PushTrace("b");
    state.PopTrace();
    state.PushTrace("c");
    EXPECT_EQ("Thread: " + ThisThread() +
                  ". Role: \r\n"
                  "    Function: a. Time: 0 seconds ago.\r\n"
                  "    Function: c. Time: 0 seconds ago.\r\n",
              InFile(state));
    state.PopTrace();
    state.PopTrace();
    EXPECT_EQ("Thread: " + ThisThread() + ". Role: \r\n", InFile(state));
}

TEST_F(ThreadState, AgeIsInWholeSecondsOfTicks)
{
    CThreadState state("");
    const auto age_after = [&](std::int64_t nanoseconds)
    {
        state.PushTrace("a");
        m_clock.Advance(nanoseconds);
        const std::string text = InFile(state);
        state.PopTrace();
        const std::size_t begin = text.find("Time: ") + 6;
        return text.substr(begin, text.find(" seconds ago.") - begin);
    };
    EXPECT_EQ("0", age_after(999 * kMillisecond));
    EXPECT_EQ("1", age_after(1000 * kMillisecond));
    EXPECT_EQ("1", age_after(1999 * kMillisecond));
    EXPECT_EQ("4294967", age_after(4'294'967'295 * kMillisecond));
    EXPECT_EQ("0", age_after(4'294'967'296 * kMillisecond));
    EXPECT_EQ("7", age_after(4'294'974'296 * kMillisecond));
    EXPECT_EQ("4294966", age_after(-1000 * kMillisecond));
}

TEST_F(ThreadState, EachMarkReadsTheClockItself)
{
    CThreadState state("");
    state.PushTrace("a");
    state.PushTrace("b");
    m_log->set_hook([this] { m_clock.Advance(2'000 * kMillisecond); });
    state.DumpToLog();
    EXPECT_NE(std::string::npos, TakeLogged().find("    Function: a. Time: 2 seconds ago.\n"
                                                   "    Function: b. Time: 4 seconds ago.\n"));
}

TEST_F(ThreadState, LogDumpWritesOneMessageForALineAtTheThreadsIndent)
{
    CThreadState state("backup");
    state.PushTrace("a");
    const progress_scope_t scope(true, logging::channels::default_log, "");
    state.DumpToLog();
    ASSERT_EQ(2u, m_log->messages().size());
    EXPECT_EQ(0u, WithoutHeads(m_log->messages()[0]).find("       |   Thread: "));
    EXPECT_EQ("       |       Function: a. Time: 0 seconds ago.\n", WithoutHeads(m_log->messages()[1]));
}

TEST_F(ThreadState, RoleAndMarkAreNotScannedForReferences)
{
    RunOnThreadAt(kFirst,
                  [this]
                  {
                      CThreadState state("%1%2");
                      state.PushTrace("%2%01");
                      state.DumpToLog();
                      EXPECT_EQ("Thread: " + ThisThread() +
                                    ". Role: %1%2.\n"
                                    "    Function: %2%01. Time: 0 seconds ago.\n",
                                TakeLogged());
                  });
}

TEST_F(ThreadState, LogDumpOnALogThatFailsThrowsNothing)
{
    CThreadState state("");
    state.PushTrace("a");
    m_log->set_hook([] { throw std::runtime_error("disk full"); });
    EXPECT_NO_THROW(state.DumpToLog());
}

// The ids of a program under the address sanitizer are all below 2^31 or above 2^32.
#ifndef __SANITIZE_ADDRESS__
TEST_F(ThreadState, LogDumpPrintsTheLowHalfOfTheIdAsASignedNumber)
{
    for (const std::uintptr_t address : {kBelow2To32, kAbove2To32})
        RunOnThreadAt(address,
                      [&]
                      {
                          const auto id = static_cast<std::int64_t>(pthread_self());
                          const CThreadState state("");
                          state.DumpToLog();
                          EXPECT_EQ(util::Format("Thread: %1. Role: .\n", id - 4'294'967'296), TakeLogged());
                          EXPECT_EQ(util::Format("Thread: %1. Role: \r\n", id), InFile(state));
                      });
}
#endif

// The table

TEST_F(ThreadStatesCollection, DumpsStatesInTheOrderOfTheirIds)
{
    m_table.Add(StateAt(kThird, "c"));
    m_table.Add(StateAt(kFirst, "a"));
    m_table.Add(StateAt(kSecond, "b"));
    m_table.DumpToLog();
    EXPECT_EQ(util::Format("Thread: %1. Role: a.\nThread: %2. Role: b.\nThread: %3. Role: c.\n", IdAt(kFirst),
                           IdAt(kSecond), IdAt(kThird)),
              TakeLogged());
    EXPECT_EQ(util::Format("Thread: %1. Role: a\r\nThread: %2. Role: b\r\nThread: %3. Role: c\r\n",
                           IdAt(kFirst), IdAt(kSecond), IdAt(kThird)),
              Dumped());
}

TEST_F(ThreadStatesCollection, DumpOfNobodyIsEmpty)
{
    EXPECT_EQ("", Listed());
    EXPECT_EQ("", Dumped());
}

TEST_F(ThreadStatesCollection, AddTakesThePlaceOfAStateWithTheSameId)
{
    m_table.Add(StateAt(kFirst, "old"));
    m_table.Add(StateAt(kSecond, "other"));
    m_table.Add(StateAt(kFirst, "new"));
    EXPECT_EQ("new other ", Listed());
}

TEST_F(ThreadStatesCollection, RemoveTakesWhatStandsUnderTheId)
{
    m_table.Add(StateAt(kFirst, "a"));
    m_table.Add(StateAt(kSecond, "b"));
    m_table.Remove(StateAt(kFirst, "another state of this id"));
    EXPECT_EQ("b ", Listed());
    m_table.Remove(StateAt(kFirst, "nobody's any more"));
    EXPECT_EQ("b ", Listed());
}

TEST_F(ThreadStatesCollection, RemoveMissesIdsBeyond32Bits)
{
    const state_ptr_t main = boost::make_shared<CThreadState>("main");
    main->PushTrace("a");
    m_table.Add(main);
    m_table.Remove(main);
    EXPECT_LT(1ULL << 32, main->GetThreadId());
    EXPECT_EQ(util::Format("Thread: %1. Role: main\r\n    Function: a. Time: 0 seconds ago.\r\n",
                           main->GetThreadId()),
              Dumped());
    m_table.Add(boost::make_shared<CThreadState>("next"));
    EXPECT_EQ("next ", Listed());
}

#ifndef __SANITIZE_ADDRESS__
TEST_F(ThreadStatesCollection, RemoveMissesIdsFrom2To31OnToo)
{
    const state_ptr_t state = StateAt(kBelow2To32, "left");
    m_table.Add(state);
    m_table.Remove(state);
    EXPECT_EQ("left ", Listed());
}

TEST_F(ThreadStatesCollection, RemoveOfAWideIdTakesTheStateOfItsLowHalf)
{
    const state_ptr_t wide = StateAt(kAbove2To32, "wide");
    m_table.Add(wide);
    m_table.Add(StateAt(kBelow2To31, "low half"));
    m_table.Remove(wide);
    EXPECT_EQ("wide ", Listed());
}
#endif

TEST_F(ThreadStatesCollection, CurrentStateIsThatOfTheCallingThread)
{
    EXPECT_EQ(nullptr, m_table.GetCurrentState());
    const state_ptr_t main = boost::make_shared<CThreadState>("main");
    m_table.Add(main);
    EXPECT_EQ(main, m_table.GetCurrentState());
    RunOnThreadAt(kFirst,
                  [this]
                  {
                      EXPECT_EQ(nullptr, m_table.GetCurrentState());
                      const state_ptr_t state = boost::make_shared<CThreadState>("a");
                      m_table.Add(state);
                      EXPECT_EQ(state, m_table.GetCurrentState());
                      m_table.Remove(state);
                      EXPECT_EQ(nullptr, m_table.GetCurrentState());
                  });
}

TEST_F(ThreadStatesCollection, DumpReplacesWhatTheTraceFileHolds)
{
    WriteFile(m_trace, std::string(3000, 'x'));
    m_table.Add(StateAt(kFirst, "a"));
    m_table.DumpToFile();
    m_table.DumpToFile();
    EXPECT_EQ(util::Format("Thread: %1. Role: a\r\n", IdAt(kFirst)), ReadFile(m_trace));
}

TEST_F(ThreadStatesCollection, DumpNeverCreatesTheTraceFile)
{
    m_table.Add(StateAt(kFirst, "a"));
    m_table.DumpToFile();
    EXPECT_NE(0, ::access(m_trace.c_str(), F_OK));
}

TEST_F(ThreadStatesCollection, FileInNoFolderIsNoTraceFile)
{
    WriteFile(m_folder / "file", "untouched");
    m_table.SetTraceFile(m_folder / "file/run");
    EXPECT_NO_THROW(m_table.DumpToFile());
    m_table.SetTraceFile(m_folder / "missing/run");
    EXPECT_NO_THROW(m_table.DumpToFile());
    EXPECT_EQ("untouched", ReadFile(m_folder / "file"));
}

TEST_F(ThreadStatesCollection, EveryNameGetsTheExtension)
{
    m_table.Add(StateAt(kFirst, "a"));
    WriteFile(m_folder / "run.trace.trace", "");
    WriteFile(m_folder / "run.trace", "untouched");
    m_table.SetTraceFile(m_folder / "run.trace");
    m_table.DumpToFile();
    EXPECT_EQ("untouched", ReadFile(m_folder / "run.trace"));
    EXPECT_EQ(util::Format("Thread: %1. Role: a\r\n", IdAt(kFirst)), ReadFile(m_folder / "run.trace.trace"));
}

TEST_F(ThreadStatesCollection, EmptyNameTurnsFileDumpsOff)
{
    WriteFile(m_trace, "untouched");
    m_table.SetTraceFile("");
    EXPECT_NO_THROW(m_table.DumpToFile());
    EXPECT_EQ("untouched", ReadFile(m_trace));
    EXPECT_NO_THROW(CThreadStatesCollection().DumpToFile());
}

TEST_F(ThreadStatesCollection, FileThatCannotBeOpenedIsAFailure)
{
    ASSERT_EQ(0, ::mkdir(m_trace.c_str(), 0700));
    EXPECT_EQ("Is a directory\nPOSIX: Failed to open file [" + m_trace + "] for read/write access.",
              FailureOfDump());
    EXPECT_TRUE(IsFree());
}

TEST_F(ThreadStatesCollection, FileThatCannotBeCutIsAFailure)
{
    ASSERT_EQ(0, ::symlink("/dev/full", m_trace.c_str()));
    EXPECT_EQ("Invalid argument\nset_size failed. File: [" + m_trace + "]. New size: [0]", FailureOfDump());
    EXPECT_TRUE(IsFree());
}

TEST_F(ThreadStatesCollection, LogsThreadsUnlessToldOtherwise)
{
    EXPECT_TRUE(m_table.IsLoggingEnabled());
    m_table.SetLoggingEnabled(false);
    EXPECT_FALSE(m_table.IsLoggingEnabled());
    m_table.SetLoggingEnabled(true);
    EXPECT_TRUE(m_table.IsLoggingEnabled());
}

// A receiver is written to while the dump holds the table.
TEST_F(ThreadStatesCollection, ReceiverMayUseTheTableDuringADump)
{
    m_table.Add(StateAt(kFirst, "a"));
    m_log->set_hook([this] { EXPECT_EQ(nullptr, m_table.GetCurrentState()); });
    EXPECT_EQ("a ", Listed());
}

TEST_F(ThreadStatesCollection, MissingTraceFileDoesNotWaitForALogDump)
{
    m_table.Add(StateAt(kFirst, "a"));
    bool dumped = false;
    std::future<void> dump;
    m_log->set_hook(
        [&]
        {
            dump = std::async(std::launch::async, [this] { m_table.DumpToFile(); });
            dumped = dump.wait_for(kPatience) == std::future_status::ready;
        });
    EXPECT_EQ("a ", Listed());
    EXPECT_TRUE(dumped);
}

TEST_F(ThreadStatesCollection, ServesManyThreadsAtOnce)
{
    boost::thread_group threads;
    for (int i = 0; i != 4; ++i)
        threads.create_thread(
            [this, i]
            {
                const state_ptr_t state = boost::make_shared<CThreadState>(std::to_string(i));
                for (int k = 0; k != 200; ++k)
                {
                    m_table.Add(state);
                    EXPECT_EQ(state, m_table.GetCurrentState());
                    m_table.Remove(state);
                    m_table.SetTraceFile(m_folder / std::to_string(k));
                    m_table.SetLoggingEnabled(k % 2 == 0);
                    m_table.IsLoggingEnabled();
                }
            });
    for (int k = 0; k != 200; ++k)
        m_table.DumpToFile();
    threads.join_all();
}

TEST(ThreadStatesCollectionInstance, IsOneAndLives)
{
    const auto first = CThreadStatesCollection::GetInstance();
    EXPECT_EQ(first, CThreadStatesCollection::GetInstance());
    EXPECT_EQ(2, first.use_count());
}

// Marks

TEST_F(Dumps, MarksOfAThreadWithoutAStateGoNowhere)
{
    monitoring::PushThreadMark("a");
    monitoring::PopThreadMark();
    monitoring::PopThreadMark();
    EXPECT_EQ(nullptr, CThreadStatesCollection::GetInstance()->GetCurrentState());
}

TEST_F(Dumps, MarksGoToTheStateOfTheCallingThread)
{
    const auto table = CThreadStatesCollection::GetInstance();
    RunOnThreadAt(
        kFirst,
        [&]
        {
            const state_ptr_t state = boost::make_shared<CThreadState>("");
            const state_ptr_t unlisted = boost::make_shared<CThreadState>("");
            table->Add(state);
            monitoring::PushThreadMark("a");
            monitoring::PushThreadMark("b");
            monitoring::PopThreadMark();
            table->Remove(state);
            monitoring::PushThreadMark("c");
            EXPECT_EQ(util::Format("Thread: %1. Role: \r\n    Function: a. Time: 0 seconds ago.\r\n",
                                   state->GetThreadId()),
                      InFile(*state));
            EXPECT_EQ(util::Format("Thread: %1. Role: \r\n", state->GetThreadId()), InFile(*unlisted));
        });
}

TEST_F(Dumps, ScopeThatEndsTakesTheMarkOfTheStateThatItsThreadHasByThen)
{
    const auto table = CThreadStatesCollection::GetInstance();
    RunOnThreadAt(kFirst,
                  [&]
                  {
                      const state_ptr_t before = boost::make_shared<CThreadState>("");
                      const state_ptr_t by_then = boost::make_shared<CThreadState>("");
                      by_then->PushTrace("b");
                      table->Add(before);
                      {
                          const progress_scope_t scope(true, logging::channels::default_log, "a");
                          table->Add(by_then);
                      }
                      table->Remove(by_then);
                      const std::string thread = "Thread: " + ThisThread() + ". Role: \r\n";
                      EXPECT_EQ(thread + "    Function: a. Time: 0 seconds ago.\r\n", InFile(*before));
                      EXPECT_EQ(thread, InFile(*by_then));
                  });
}
