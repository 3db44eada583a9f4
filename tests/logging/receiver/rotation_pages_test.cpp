// What memory a rotation takes.

#include "nelvo/logging/receiver/rotation.h"

#include <unistd.h>

#include <gtest/gtest.h>

#include "nelvo/logging/receiver/posix_log_file.h"
#include "tests/support/most_memory.h"
#include "tests/support/temp_folder.h"

// The buffer is a mebibyte, zlib takes less than half of another, and the code is touched too.
TEST(RotationPages, LogOfAnySizeTakesTheCopyBufferAndLittleMore)
{
    constexpr off_t kLogSize = 67'108'864;
    constexpr long kThreeMebibytes = 3072;
    const temp_folder_t folder;
    WriteFile(folder / "a.log", "");
    ASSERT_EQ(0, ::truncate((folder / "a.log").c_str(), kLogSize));
    posix::posix_log_file_t log(folder / "a.log");
    const long before = MostMemory();
    logging::receiver::validate_log_size(log);
    EXPECT_EQ(0u, log.get_size());
    EXPECT_GT(kThreeMebibytes, MostMemory() - before);
}
