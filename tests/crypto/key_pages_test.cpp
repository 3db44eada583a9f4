// What memory keys take whose sizes are false.

#include "nelvo/crypto/key.h"

#include <string>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/crypto/repair_record.h"
#include "tests/support/golden.h"
#include "tests/support/most_memory.h"
#include "tests/support/record_stream.h"

using crypto::secure_array_t;

namespace
{

constexpr long kMebibyte = 1024;

// What the process has at the most, beyond what it had when it read a smaller size that is as false.
template <class Read>
long MemoryOfAFalseSize(const std::string& head, Read read)
{
    const auto read_claimed = [&](const std::string& size)
    {
        record_stream_t stream(Unhex(head + " " + size + " 61 62 63"));
        read(stream);
    };
    read_claimed("00 00 01 00");
    const long before = MostMemory();
    read_claimed("00 00 00 40");
    return MostMemory() - before;
}

} // namespace

TEST(KeyPages, KeyTakesMemoryForWhatCameAlone)
{
    const auto read = [](io::io_dev_t& stream)
    {
        const auto key = crypto::CKey::DeSerialize(stream);
        EXPECT_EQ('c', key->GetData()[2]);
        EXPECT_EQ(0, key->GetData()[key->GetData().size() - 1]);
    };
    EXPECT_GT(kMebibyte, MemoryOfAFalseSize("01 00 00 00", read));
}

TEST(KeyPages, RepairRecordTakesMemoryForWhatCameAlone)
{
    const auto read = [](io::io_dev_t& stream) { crypto::CRestoreKeyRepairRec::DeSerialize(stream); };
    EXPECT_GT(kMebibyte,
              MemoryOfAFalseSize("10 00 00 00 00 11 22 33 44 55 66 77 88 99 aa bb cc dd ee ff", read));
}

TEST(KeyPages, AesBlobTakesMemoryForWhatCameAlone)
{
    const auto read = [](const record_stream_t& stream)
    {
        const std::string bytes = stream.bytes();
        crypto::CAesKeyIVBlob::FromBlob(boost::make_shared<secure_array_t>(bytes.data(), bytes.size()));
    };
    EXPECT_GT(kMebibyte, MemoryOfAFalseSize(std::string(36, '0') + "00 00 00 00", read));
}

TEST(KeyPages, ArrayThatIsCutOffIsZeroAndTakesMemoryForWhatWasInItAlone)
{
    secure_array_t bytes;
    const long before = MostMemory();
    bytes = secure_array_t(std::size_t{1} << 30U);
    bytes[5] = 'a';
    bytes[(std::size_t{1} << 30U) - 1] = 'b';
    bytes.resize(1);
    EXPECT_EQ(0, bytes.data()[5]);
    EXPECT_EQ(0, bytes.data()[(std::size_t{1} << 30U) - 1]);
    EXPECT_GT(kMebibyte, MostMemory() - before);
}
