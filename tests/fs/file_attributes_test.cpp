#include "nelvo/fs/file_attributes.h"

#include <gtest/gtest.h>

#include "tests/fs/record_checks.h"
#include "tests/support/golden.h"

namespace
{

const stored_fields_t kFields = {{"T", field_kind_t::kValue}};

void ReadMember(io::io_dev_t& stream) { CFileAttributes().DeSerialize(stream); }
void ReadObject(io::io_dev_t& stream) { CFileAttributes::FromStream(stream); }
void Write(io::io_dev_t& stream) { CFileAttributes(0x81020304).Serialize(stream); }

} // namespace

TEST(FileAttributes, AreZeroUnlessGiven)
{
    EXPECT_EQ(0u, CFileAttributes().GetAttributes());
    EXPECT_EQ(0x81020304u, CFileAttributes(0x81020304).GetAttributes());
}

TEST(FileAttributes, TheirStoredFormIsTheFourBytes)
{
    EXPECT_EQ(Hex(Golden("file_attributes")), Hex(Written(Write)));
}

TEST(FileAttributes, AreReadIntoAnObjectOrAsOne)
{
    record_stream_t stream(Golden("file_attributes") + Golden("file_attributes"));
    CFileAttributes attributes(7);
    attributes.DeSerialize(stream);
    EXPECT_EQ(0x81020304u, attributes.GetAttributes());
    EXPECT_EQ(0x81020304u, CFileAttributes::FromStream(stream).GetAttributes());
    EXPECT_EQ(0u, stream.GetRemaining());
}

TEST(FileAttributes, ShortTransferHasTheirContext)
{
    ExpectEachPrefixToFail("file_attributes", kFields, ReadMember);
    ExpectEachPrefixToFail("file_attributes", kFields, ReadObject);
    ExpectEachFullDeviceToFail("file_attributes", kFields, Write);
}

TEST(FileAttributes, FailedReadLeavesThem)
{
    record_stream_t stream(std::string(3, 'x'));
    CFileAttributes attributes(7);
    EXPECT_ANY_THROW(attributes.DeSerialize(stream));
    EXPECT_EQ(7u, attributes.GetAttributes());
}

TEST(FileAttributes, EachBitPatternIsRead)
{
    ExpectEachBitFlipToBeReadOrRefused("file_attributes", ReadMember);
    for (const std::string& flip : BitFlips(Golden("file_attributes")))
    {
        record_stream_t stream(flip);
        const CFileAttributes attributes = CFileAttributes::FromStream(stream);
        EXPECT_EQ(Hex(flip), Hex(Written([&](io::io_dev_t& out) { attributes.Serialize(out); })));
    }
}
