#include "nelvo/context/path_access.h"

#include <gtest/gtest.h>

#include "nelvo/core/util/str.h"

TEST(PathAccess, EveryPathPassesUnlessAProgramRestrictsThem)
{
    for (const char* path : {"", "/", "/etc/shadow", "relative/name", "/no/such/file", "\xff\n\x01"})
        EXPECT_NO_THROW(security::CheckPathAccess(path)) << path;
}

TEST(PathAccess, WidePathIsTakenAsWell) { EXPECT_NO_THROW(security::CheckPathAccess(L"/\x20ac")); }
