#pragma once

#include <string>
#include <typeinfo>

#include <gtest/gtest.h>

// The text of what the call throws; fails the test unless it throws exactly that type.
template <class Exception, class Call>
std::string Thrown(Call call)
{
    try
    {
        call();
        ADD_FAILURE() << "nothing was thrown";
    }
    catch (const std::exception& e)
    {
        EXPECT_TRUE(typeid(Exception) == typeid(e)) << typeid(e).name();
        return e.what();
    }
    return {};
}
