#include "nelvo/fs/access_permissions.h"

#include <type_traits>

#include <gtest/gtest.h>

#include "nelvo/core/util/str.h"
#include "tests/support/vtable_slot.h"

using security::CUnrestrictedFilesAccessPermissions;
using security::IFilesAccessPermissions;

TEST(AccessPermissions, CheckIsTheFirstOperation)
{
    EXPECT_EQ(0u, VtableSlot(&IFilesAccessPermissions::CheckAccess));
    EXPECT_EQ(0u, VtableSlot(&CUnrestrictedFilesAccessPermissions::CheckAccess));
}

TEST(AccessPermissions, InterfaceIsPureAndEndsThroughItself)
{
    EXPECT_TRUE(std::is_abstract_v<IFilesAccessPermissions>);
    EXPECT_TRUE(std::has_virtual_destructor_v<IFilesAccessPermissions>);
}

TEST(AccessPermissions, UnrestrictedObjectHoldsNothingAndAllowsAll)
{
    EXPECT_EQ(sizeof(void*), sizeof(CUnrestrictedFilesAccessPermissions));
    CUnrestrictedFilesAccessPermissions unrestricted;
    IFilesAccessPermissions& permissions = unrestricted;
    for (const char* path : {"", "/etc/shadow", "\xff"})
        EXPECT_NO_THROW(permissions.CheckAccess(path)) << path;
}
