#pragma once

// What every copy of an exception must carry. Detailed() gives an exception all that one can have, on another
// thread; ExpectCopyOf holds a copy against it.

#include <functional>
#include <thread>
#include <typeinfo>

#include <gtest/gtest.h>

#include "nelvo/core/exc/exc_base.h"

// The exception that make returns, built on a thread of its own, with a marked line, a property and an event.
template <class Make>
auto Detailed(const Make& make)
{
    boost::shared_ptr<decltype(make())> made;
    std::thread worker(
        [&]
        {
            auto exception = make();
            exception.AddMarkedMessage("marked");
            exception.GetTrace().properties["key"] = "value";
            exception.AddEvent(2, "info");
            made.reset(new decltype(make())(exception));
        });
    worker.join();
    EXPECT_NE(pthread_self(), made->GetThreadId());
    return *made;
}

template <class Type>
void ExpectCopyOf(const exc::exc_base_t& original, const exc::exc_base_t& copy)
{
    EXPECT_NE(&original, &copy);
    EXPECT_EQ(typeid(Type), typeid(copy));
    EXPECT_EQ(original.GetFullText(), copy.GetFullText());
    EXPECT_EQ(original.GetPlainText(), copy.GetPlainText());
    EXPECT_EQ(original.GetThreadId(), copy.GetThreadId());
}

// What the exception's Rethrow throws goes to look, as the base of the family.
inline void LookAtRethrown(const exc::exc_base_t& exception,
                           const std::function<void(const exc::exc_base_t&)>& look)
{
    try
    {
        exception.Rethrow();
    }
    catch (const exc::exc_base_t& thrown)
    {
        look(thrown);
    }
}
