#include "nelvo/fs/impersonation.h"

#include <gtest/gtest.h>

TEST(Impersonation, SessionIsOneByteInAHandleOfItsOwn)
{
    EXPECT_EQ(1u, sizeof(util::stub_impersonation_session_t));

    const util::stub_impersonation_session_ptr_t first = util::HoldImpersonation();
    const util::stub_impersonation_session_ptr_t second = util::HoldImpersonation();
    EXPECT_EQ(1, first.use_count());
    EXPECT_NE(first, second);
}
