#include <gtest/gtest.h>

#include "tests/support/program_output.h"

namespace
{

// Where calls are bound late, the loader keeps the registers on the stack meanwhile, and with them what was
// copied last.
std::string Found(const std::string& arguments) { return OutputOf("LD_BIND_NOW=1 " WIPED_KEYS + arguments); }

} // namespace

TEST(KeyWipe, NothingIsLeftAnywhereInAProgramOptimisedAsAWhole) { EXPECT_EQ("0\n", Found("")); }

TEST(KeyWipe, PlainCopyAnywhereInThatProgramWouldBeFound) { EXPECT_NE("0\n", Found(" with a plain copy")); }
