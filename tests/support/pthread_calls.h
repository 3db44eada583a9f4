#pragma once

// What the sources ask of the threads' library and of the wall clock, call by call. A program with this has
// functions of its own in the place of the C library's: while a work is watched, each call is noted and
// answered, and none is made.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

// The name of each call; of a timed wait its deadline too, "timedwait(<seconds>.<nanoseconds>)".
using calls_t = std::vector<std::string>;

class PthreadCalls : public ::testing::Test
{
protected:
    PthreadCalls();
    ~PthreadCalls() override;

    // The calls that the work makes, and the failure that leaves it.
    calls_t Calls(const std::function<void()>& work);

    // "no failure", or what(), and in brackets the category and the code.
    const std::string& failure() const { return m_failure; }

    // The mutexes that the work locks, in order.
    std::vector<const void*> Locked(const std::function<void()>& work);

    // The result of a later call of this name that no earlier answer is for. Without one a call succeeds, and
    // a timed wait times out.
    static void Answer(const std::string& name, int result);

    // Called by each timed wait.
    static void SetHook(std::function<void()> hook);

    // What the clock says.
    static void SetTime(std::int64_t seconds, std::int64_t microseconds);

    // How many timed waits were begun while nobody watched.
    static int WaitCount();

private:
    std::string m_failure;
};
