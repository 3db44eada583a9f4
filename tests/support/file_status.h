#pragma once

// What the system says of a file; fails the test if it says nothing.

#include <string>

#include <sys/stat.h>

#include <gtest/gtest.h>

// Links are followed.
inline struct stat StatusOf(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(0, ::stat(path.c_str(), &status)) << path;
    return status;
}

// Of a link itself.
inline struct stat LinkStatusOf(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(0, ::lstat(path.c_str(), &status)) << path;
    return status;
}

// The lowest 12 bits of the mode, links followed.
inline mode_t ModeOf(const std::string& path) { return StatusOf(path).st_mode & 07777; }
