#pragma once

#include <cstdio>
#include <string>

#include <gtest/gtest.h>

// What a program writes to its standard output; fails the test if the program fails.
inline std::string OutputOf(const std::string& program)
{
    std::FILE* const pipe = ::popen(program.c_str(), "r");
    if (pipe == nullptr)
    {
        ADD_FAILURE() << "cannot start " << program;
        return {};
    }
    std::string output;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        output += static_cast<char>(c);
    EXPECT_EQ(0, ::pclose(pipe)) << program;
    return output;
}
