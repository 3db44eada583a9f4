// Masks what is sensitive before any text of a key set is made in this process. So it stands in a program of
// its own.

#include <gtest/gtest.h>

#include "nelvo/logging/log.h"
#include "tests/crypto/key_set_vocabulary.h"

TEST(KeySet, MaskingIsAskedForOncePerProcess)
{
    const std::string text = "ID: 01000000000000000000000000000000 (user)";
    const crypto::CKeySet::ptr_t key_set = MakeSet(1, {MakeKey(0, "a")}, {MakeRecord(2, "r")});
    logging::GetProcessLog()->set_mask_sensitive(true);
    EXPECT_EQ(text, key_set->ToString());
    logging::GetProcessLog()->set_mask_sensitive(false);
    EXPECT_EQ(text, key_set->ToString());
    EXPECT_EQ("ID: 02000000000000000000000000000000 (user)", MakeSet(2)->ToString());
}
