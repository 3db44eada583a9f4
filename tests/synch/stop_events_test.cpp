#include "nelvo/synch/stop_events.h"

#include <thread>
#include <type_traits>

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>
#include <gtest/gtest.h>

#include "tests/support/placed_thread.h"

namespace
{

using event_ptr_t = boost::shared_ptr<posix::posix_manual_reset_event_t>;
using registration_t = ::CStopEvtThreadRegistration;

event_ptr_t NewEvent() { return boost::make_shared<posix::posix_manual_reset_event_t>(false); }

void Set(const event_ptr_t& event) { synch::CStopEvtCollection::GetInstance()->SetForCurrentThread(event); }

event_ptr_t Get() { return synch::CStopEvtCollection::GetInstance()->GetForCurrentThread(); }

void Remove() { synch::CStopEvtCollection::GetInstance()->RemoveCurrentThread(); }

void InheritFrom(std::uint64_t id) { synch::CStopEvtCollection::GetInstance()->InheritFrom(id); }

// A later thread may have the same id.
void RunOnThread(const std::function<void()>& body)
{
    std::thread(
        [&]
        {
            body();
            Remove();
        })
        .join();
}

// What a thread gets that is registered as the child of one with this id.
event_ptr_t InheritedFrom(std::uint64_t parent_id)
{
    event_ptr_t event;
    RunOnThread(
        [&]
        {
            const registration_t registration(static_cast<std::int32_t>(parent_id));
            event = Get();
        });
    return event;
}

class StopEvents : public ::testing::Test
{
protected:
    void TearDown() override { Remove(); }
};

class StopEvtThreadRegistration : public StopEvents
{
};

} // namespace

TEST_F(StopEvents, OneCollectionServesAllThreads)
{
    const auto collection = synch::CStopEvtCollection::GetInstance();
    EXPECT_EQ(collection, synch::CStopEvtCollection::GetInstance());
    RunOnThread([&] { EXPECT_EQ(collection, synch::CStopEvtCollection::GetInstance()); });
    static_assert(!std::is_polymorphic_v<synch::CStopEvtCollection>);
}

TEST_F(StopEvents, EachThreadHasItsOwn)
{
    const event_ptr_t first = NewEvent();
    const event_ptr_t second = NewEvent();
    Set(first);
    RunOnThread(
        [&]
        {
            EXPECT_EQ(nullptr, Get());
            Set(second);
            EXPECT_EQ(second, Get());
        });
    EXPECT_EQ(first, Get());
    Set(second);
    EXPECT_EQ(second, Get());
}

TEST_F(StopEvents, RemoveTakesTheCallersEntryAlone)
{
    Set(NewEvent());
    RunOnThread(
        []
        {
            Remove();
            EXPECT_EQ(nullptr, Get());
        });
    EXPECT_NE(nullptr, Get());
    Remove();
    Remove();
    EXPECT_EQ(nullptr, Get());
}

TEST_F(StopEvents, EntrySharesItsEvent)
{
    event_ptr_t event = NewEvent();
    const boost::weak_ptr<posix::posix_manual_reset_event_t> watched = event;
    Set(event);
    event.reset();
    EXPECT_FALSE(watched.expired());
    Remove();
    EXPECT_TRUE(watched.expired());
}

TEST_F(StopEvents, InheritingSharesTheOthersEvent)
{
    Set(NewEvent());
    RunOnThread(
        [id = pthread_self()]
        {
            InheritFrom(id);
            EXPECT_NE(nullptr, Get());
            Get()->set();
        });
    EXPECT_TRUE(Get()->wait(0));
}

TEST_F(StopEvents, InheritingReplacesTheCallersEvent)
{
    Set(NewEvent());
    RunOnThread(
        [id = pthread_self(), event = Get()]
        {
            Set(NewEvent());
            InheritFrom(id);
            EXPECT_EQ(event, Get());
        });
}

TEST_F(StopEvents, InheritingFromAnUnknownThreadChangesNothing)
{
    InheritFrom(1);
    EXPECT_EQ(nullptr, Get());
    const event_ptr_t event = NewEvent();
    Set(event);
    InheritFrom(1);
    EXPECT_EQ(event, Get());
}

// An entry that the question made would be inherited.
TEST_F(StopEvents, AskingMakesNoEntry)
{
    EXPECT_EQ(nullptr, Get());
    RunOnThread(
        [id = pthread_self()]
        {
            const event_ptr_t event = NewEvent();
            Set(event);
            InheritFrom(id);
            EXPECT_EQ(event, Get());
        });
}

TEST_F(StopEvents, EntryWithoutAnEventIsInheritedToo)
{
    Set({});
    RunOnThread(
        [id = pthread_self()]
        {
            Set(NewEvent());
            InheritFrom(id);
            EXPECT_EQ(nullptr, Get());
        });
}

#ifndef __SANITIZE_ADDRESS__ // KeysAreWholeIds needs a stack above 2^32.
TEST_F(StopEvents, KeysAreWholeIds)
{
    RunOnThreadAt(kBelow2To31,
                  []
                  {
                      Set(NewEvent());
                      RunOnThreadAt(kAbove2To32, [] { EXPECT_EQ(nullptr, Get()); });
                      Remove();
                  });
}
#endif

TEST_F(StopEvtThreadRegistration, SharesTheParentsEventWhileItLives)
{
    RunOnThreadAt(kBelow2To31,
                  []
                  {
                      const event_ptr_t event = NewEvent();
                      Set(event);
                      RunOnThread(
                          [parent_id = static_cast<std::int32_t>(pthread_self()), event]
                          {
                              {
                                  const registration_t registration(parent_id);
                                  EXPECT_EQ(event, Get());
                              }
                              EXPECT_EQ(nullptr, Get());
                          });
                      EXPECT_EQ(event, Get());
                      Remove();
                  });
}

TEST_F(StopEvtThreadRegistration, TakesAnyEventOfTheThreadAwayAtItsEnd)
{
    const event_ptr_t event = NewEvent();
    {
        Set(event);
        const registration_t registration(0);
        EXPECT_EQ(event, Get());
    }
    EXPECT_EQ(nullptr, Get());
    static_assert(std::is_nothrow_destructible_v<registration_t>);
}

TEST_F(StopEvtThreadRegistration, KeepsTheCollection)
{
    const auto collection = synch::CStopEvtCollection::GetInstance();
    const long count = collection.use_count();
    {
        const registration_t registration(0);
        EXPECT_EQ(count + 1, collection.use_count());
    }
    EXPECT_EQ(count, collection.use_count());
}

TEST_F(StopEvtThreadRegistration, InheritsNothingFromAParentWhoseIdIsWider)
{
    const auto inherited = []
    {
        Set(NewEvent());
        event_ptr_t event = InheritedFrom(pthread_self());
        Remove();
        return event;
    };
    EXPECT_EQ(nullptr, inherited());
#ifndef __SANITIZE_ADDRESS__
    for (const std::uintptr_t place : {kBelow2To32, kAbove2To32})
        RunOnThreadAt(place, [&] { EXPECT_EQ(nullptr, inherited()) << place; });
#endif
}

#ifndef __SANITIZE_ADDRESS__ // InheritsFromTheThreadWhoseIdIsTheParentsLowHalf needs a stack above 2^32.
TEST_F(StopEvtThreadRegistration, InheritsFromTheThreadWhoseIdIsTheParentsLowHalf)
{
    RunOnThreadAt(kBelow2To31,
                  []
                  {
                      const event_ptr_t event = NewEvent();
                      Set(event);
                      RunOnThreadAt(kAbove2To32, [&] { EXPECT_EQ(event, InheritedFrom(pthread_self())); });
                      Remove();
                  });
}
#endif
