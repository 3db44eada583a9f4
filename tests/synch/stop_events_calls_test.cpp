#include <cerrno>
#include <optional>

#include <boost/make_shared.hpp>
#include <boost/thread/exceptions.hpp>

#include "nelvo/logging/log.h"
#include "nelvo/synch/stop_events.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/pthread_calls.h"

namespace
{

using synch::CStopEvtCollection;

class StopEventsCalls : public PthreadCalls
{
protected:
    // What each operation of the collection does.
    void ForEachOperation(const std::function<void(const std::function<void()>&)>& check)
    {
        const auto event = boost::make_shared<posix::posix_manual_reset_event_t>(false);
        check([&] { m_collection->SetForCurrentThread(event); });
        check([&] { m_collection->InheritFrom(pthread_self()); });
        check([&] { m_collection->GetForCurrentThread(); });
        check([&] { m_collection->RemoveCurrentThread(); });
    }

    boost::shared_ptr<CStopEvtCollection> m_collection = CStopEvtCollection::GetInstance();
};

} // namespace

TEST_F(StopEventsCalls, MutexIsOfTheDefaultKind)
{
    std::optional<CStopEvtCollection> collection;
    EXPECT_EQ(calls_t{"mutex_init"}, Calls([&] { collection.emplace(); }));
    EXPECT_EQ(calls_t{"mutex_destroy"}, Calls([&] { collection.reset(); }));
}

TEST_F(StopEventsCalls, EachOperationHoldsTheLock)
{
    ForEachOperation([&](const auto& work) { EXPECT_EQ((calls_t{"lock", "unlock"}), Calls(work)); });
}

TEST_F(StopEventsCalls, LockIsAPlainMutex)
{
    EXPECT_EQ((calls_t{"mutex_init", "mutex_destroy"}), Calls([] { const CStopEvtCollection collection; }));
}

TEST_F(StopEventsCalls, LockThatFailsIsBoostsFailure)
{
    ForEachOperation(
        [&](const auto& work)
        {
            Answer("lock", EINVAL);
            EXPECT_EQ((calls_t{"lock"}), Calls(work));
            EXPECT_EQ("boost: mutex lock failed in pthread_mutex_lock: Invalid argument (generic 22)",
                      failure());
            Answer("lock", EINVAL);
            Calls([&] { EXPECT_THROW(work(), boost::lock_error); });
        });
}

TEST_F(StopEventsCalls, LockAndUnlockAreRepeatedAfterASignal)
{
    ForEachOperation(
        [&](const auto& work)
        {
            for (const char* const call : {"lock", "lock", "unlock"})
                Answer(call, EINTR);
            EXPECT_EQ((calls_t{"lock", "lock", "lock", "unlock", "unlock"}), Calls(work));
            EXPECT_EQ("no failure", failure());
        });
}

TEST_F(StopEventsCalls, RegistrationThatCannotEndSaysSoInTheLog)
{
    const auto receiver = boost::make_shared<lines_receiver_t>();
    logging::GetProcessLog()->set_receiver(receiver);
    std::optional<CStopEvtThreadRegistration> registration(0);
    const auto event = boost::make_shared<posix::posix_manual_reset_event_t>(false);
    m_collection->SetForCurrentThread(event);

    Answer("lock", EINVAL);
    Calls([&] { registration.reset(); });
    EXPECT_EQ("no failure", failure());
    EXPECT_EQ("       | ERR |At ~CStopEvtThreadRegistration.\n"
              "       | >>  |boost: mutex lock failed in pthread_mutex_lock: Invalid argument\n"
              "       | >>  |An exception was thrown from thread [n/a].\n",
              WithoutHeads(receiver->text()));
    EXPECT_EQ(1u, receiver->messages().size());
    EXPECT_EQ(event, m_collection->GetForCurrentThread());
    logging::GetProcessLog()->set_receiver({});
}
