#include "nelvo/monitoring/thread_registration.h"

#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>
#include <gtest/gtest.h>
#include <pthread.h>

#include "nelvo/core/util/format.h"
#include "nelvo/logging/log.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/placed_thread.h"

namespace
{

using monitoring::CThreadStatesCollection;

// Registers threads below 2^31, which the table finds again when they end.
class ThreadRegistration : public testing::Test
{
protected:
    ThreadRegistration() { logging::GetProcessLog()->set_receiver(m_log); }

    ~ThreadRegistration() override
    {
        logging::GetProcessLog()->set_receiver({});
        m_table->SetLoggingEnabled(true);
    }

    std::string Written() const { return WithoutHeads(m_log->text()); }

    boost::shared_ptr<lines_receiver_t> m_log = boost::make_shared<lines_receiver_t>();
    const boost::shared_ptr<CThreadStatesCollection> m_table = CThreadStatesCollection::GetInstance();
};

} // namespace

TEST_F(ThreadRegistration, LogsTheStartAndTheEnd)
{
    std::uint64_t id = 0;
    RunOnThreadAt(kBelow2To31,
                  [&]
                  {
                      id = pthread_self();
                      const CThreadMonitorRegistration registration("backup", 18446744073709551615U);
                  });
    EXPECT_EQ(util::Format("       | Thread started. Thread id: %1, parent id: 18446744073709551615, "
                           "role: backup\n"
                           "       | Thread finished. Role: 'backup'.\n",
                           id),
              Written());
}

TEST_F(ThreadRegistration, LogsTheWholeIdOfAThread)
{
    std::uint64_t id = 0;
    std::thread(
        [&]
        {
            id = pthread_self();
            const CThreadMonitorRegistration registration("", 0);
        })
        .join();
    EXPECT_LT(1ULL << 32, id);
    EXPECT_EQ(util::Format("       | Thread started. Thread id: %1, parent id: 0, role: \n"
                           "       | Thread finished. Role: ''.\n",
                           id),
              Written());
}

TEST_F(ThreadRegistration, RoleIsNotScannedForReferences)
{
    RunOnThreadAt(kBelow2To31, [] { const CThreadMonitorRegistration registration("%1%2", 5); });
    EXPECT_NE(std::string::npos, Written().find(", parent id: 5, role: %1%2\n"));
    EXPECT_NE(std::string::npos, Written().find("Thread finished. Role: '%1%2'.\n"));
}

TEST_F(ThreadRegistration, StandsInTheTableFromBehindTheFirstLineToBeforeTheLast)
{
    std::vector<bool> stood;
    m_log->set_hook([&] { stood.push_back(m_table->GetCurrentState() != nullptr); });
    RunOnThreadAt(kBelow2To31,
                  [&]
                  {
                      const CThreadMonitorRegistration registration("backup", 1);
                      ASSERT_NE(nullptr, m_table->GetCurrentState());
                      EXPECT_EQ("backup", m_table->GetCurrentState()->GetRole());
                      EXPECT_EQ(pthread_self(), m_table->GetCurrentState()->GetThreadId());
                      EXPECT_EQ(1u, m_log->messages().size());
                  });
    EXPECT_EQ((std::vector<bool>{false, false}), stood);
}

TEST_F(ThreadRegistration, WithLoggingDisabledItStandsInTheTableAllTheSame)
{
    m_table->SetLoggingEnabled(false);
    RunOnThreadAt(kBelow2To31,
                  [this]
                  {
                      {
                          const CThreadMonitorRegistration registration("backup", 1);
                          EXPECT_NE(nullptr, m_table->GetCurrentState());
                      }
                      EXPECT_EQ(nullptr, m_table->GetCurrentState());
                  });
    EXPECT_EQ("", Written());
}

TEST_F(ThreadRegistration, AsksAnewAtTheEndWhetherThreadsAreLogged)
{
    RunOnThreadAt(kBelow2To31,
                  [this]
                  {
                      m_table->SetLoggingEnabled(false);
                      const CThreadMonitorRegistration registration("late", 1);
                      m_table->SetLoggingEnabled(true);
                  });
    EXPECT_EQ("       | Thread finished. Role: 'late'.\n", Written());

    RunOnThreadAt(kBelow2To31,
                  [this]
                  {
                      const CThreadMonitorRegistration registration("early", 1);
                      m_table->SetLoggingEnabled(false);
                  });
    EXPECT_EQ(std::string::npos, Written().find("Role: 'early'"));
}

TEST_F(ThreadRegistration, StateEndsWithIt)
{
    boost::weak_ptr<monitoring::CThreadState> state;
    RunOnThreadAt(kBelow2To31,
                  [&]
                  {
                      {
                          const CThreadMonitorRegistration registration("backup", 1);
                          state = m_table->GetCurrentState();
                          EXPECT_FALSE(state.expired());
                      }
                      EXPECT_TRUE(state.expired());
                  });
}

TEST_F(ThreadRegistration, StateOfAWideIdStaysBehind)
{
    boost::weak_ptr<monitoring::CThreadState> state;
    std::thread(
        [&]
        {
            const CThreadMonitorRegistration registration("left", 1);
            state = m_table->GetCurrentState();
        })
        .join();
    EXPECT_FALSE(state.expired());
}

// Only what is no std::exception leaves the log.
TEST_F(ThreadRegistration, FailureAtTheEndOfAThreadEndsTheProcess)
{
    const auto end_with_failure = [this]
    {
        const CThreadMonitorRegistration registration("backup", 1);
        m_log->set_hook([] { throw 1; });
    };
    EXPECT_EXIT(end_with_failure(), testing::KilledBySignal(SIGABRT), "terminate called");
}

TEST(ThreadRegistrationAtExit, TableLivesUntilTheLastRegistrationEnds)
{
    const auto leave_one = []
    {
        static boost::shared_ptr<CThreadMonitorRegistration> last;
        last = boost::make_shared<CThreadMonitorRegistration>("last", 1);
        std::exit(0);
    };
    EXPECT_EXIT(leave_one(), testing::ExitedWithCode(0), "");
}
