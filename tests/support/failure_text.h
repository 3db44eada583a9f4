#pragma once

#include <string>

#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"

// The whole text of the exc::runtime_exc_t that the call throws, whose code must be 0 and whose lines are
// unmarked; "no failure" if none.
template <class Call>
std::string FailureText(Call call)
{
    try
    {
        call();
    }
    catch (const exc::runtime_exc_t& e)
    {
        EXPECT_EQ(0u, e.GetErrorCode());
        EXPECT_STREQ(e.GetPlainText().c_str(), e.what());
        return e.GetPlainText();
    }
    return "no failure";
}
