#include "nelvo/fs/acl_data.h"

#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/fs/record_checks.h"
#include "tests/support/golden.h"
#include "tests/support/thrown.h"

using util::AclData;

namespace
{

AclData Full() { return {"user::rw-", std::string("d\0\xff", 3)}; }

std::string Stored(const AclData& acl)
{
    return Written([&](io::io_dev_t& stream) { util::SerializeAcl(acl, stream); });
}

AclData Read(const std::string& bytes)
{
    record_stream_t stream(bytes);
    AclData acl = {"old", "old"};
    util::DeserializeAcl(acl, stream);
    EXPECT_EQ(0u, stream.GetRemaining());
    return acl;
}

void ReadOne(io::io_dev_t& stream)
{
    AclData acl;
    util::DeserializeAcl(acl, stream);
}

void WriteFull(io::io_dev_t& stream) { util::SerializeAcl(Full(), stream); }

const char kBothAbsent[] = "61 63 6c 64 00 00 00 00 00 00 00 00";
const char kBothEmpty[] = "61 63 6c 64 01 00 00 00 00 00 00 00 01 00 00 00 00 00 00 00";

} // namespace

TEST(AclData, HasNoTextsUnlessGiven)
{
    EXPECT_FALSE(AclData().access_acl.has_value());
    EXPECT_FALSE(AclData().default_acl.has_value());
}

TEST(AclData, StoredFormBeginsWithItsMagic) { EXPECT_EQ(Hex(Golden("acl_data")), Hex(Stored(Full()))); }

TEST(AclData, IsReadAsItWasWritten)
{
    const AclData acl = Read(Golden("acl_data"));
    EXPECT_EQ(Full().access_acl, acl.access_acl);
    EXPECT_EQ(Full().default_acl, acl.default_acl);
}

TEST(AclData, AbsentTextsAreTwelveBytes)
{
    EXPECT_EQ(kBothAbsent, Hex(Stored({})));
    const AclData acl = Read(Unhex(kBothAbsent));
    EXPECT_EQ(std::nullopt, acl.access_acl);
    EXPECT_EQ(std::nullopt, acl.default_acl);
}

TEST(AclData, EmptyTextsAreNotAbsent)
{
    EXPECT_EQ(kBothEmpty, Hex(Stored({"", ""})));
    const AclData acl = Read(Unhex(kBothEmpty));
    EXPECT_EQ("", acl.access_acl);
    EXPECT_EQ("", acl.default_acl);
}

TEST(AclData, EachTextMayBeAbsentAlone)
{
    EXPECT_EQ("61 63 6c 64 01 00 00 00 01 00 00 00 61 00 00 00 00", Hex(Stored({"a", std::nullopt})));
    EXPECT_EQ("61 63 6c 64 00 00 00 00 01 00 00 00 01 00 00 00 64", Hex(Stored({std::nullopt, "d"})));
    EXPECT_EQ(std::nullopt, Read(Stored({"a", std::nullopt})).default_acl);
    EXPECT_EQ("a", Read(Stored({"a", std::nullopt})).access_acl);
    EXPECT_EQ(std::nullopt, Read(Stored({std::nullopt, "d"})).access_acl);
    EXPECT_EQ("d", Read(Stored({std::nullopt, "d"})).default_acl);
}

TEST(AclData, EachBitOfTheMagicCounts)
{
    const std::string bytes = Golden("acl_data");
    for (const std::string& magic : BitFlips(bytes.substr(0, 4)))
    {
        record_stream_t stream(magic + bytes.substr(4));
        EXPECT_EQ("Invalid ACL data.\nFailed to unserialize ACL data into stream.",
                  Thrown<exc::runtime_exc_t>([&] { ReadOne(stream); }))
            << Hex(magic);
        EXPECT_EQ(bytes.size() - 4, stream.GetRemaining());
    }
}

TEST(AclData, FailureToReadSaysInto)
{
    record_stream_t stream;
    EXPECT_EQ("Failed to retrieve value from the binary stream: received less bytes (0) than expected (4).\n"
              "Failed to unserialize ACL data into stream.",
              Thrown<exc::runtime_exc_t>([&] { ReadOne(stream); }));
}

TEST(AclData, ShortTransferHasItsContext)
{
    ExpectEachPrefixToFail("acl_data", AclFields(), ReadOne);
    ExpectEachFullDeviceToFail("acl_data", AclFields(), WriteFull);
}

TEST(AclData, FailedReadLeavesBothTexts)
{
    for (const std::string& prefix : Prefixes(Golden("acl_data")))
    {
        record_stream_t stream(prefix);
        AclData acl = {"old", std::nullopt};
        EXPECT_ANY_THROW(util::DeserializeAcl(acl, stream));
        EXPECT_EQ("old", acl.access_acl) << prefix.size();
        EXPECT_EQ(std::nullopt, acl.default_acl) << prefix.size();
    }
}

TEST(AclData, WrongLengthsFail) { ExpectWrongLengthsToFail("acl_data", AclFields(), ReadOne); }

TEST(AclData, LastTextIsAsLongAsItsLengthSays)
{
    const std::string before = Unhex("61 63 6c 64 00 00 00 00 01 00 00 00");
    EXPECT_EQ("", Read(before + Unhex("00 00 00 00")).default_acl);
    EXPECT_EQ("x", Read(before + Unhex("01 00 00 00") + "x").default_acl);
}

TEST(AclData, BrokenFormIsReadOrRefused) { ExpectEachBitFlipToBeReadOrRefused("acl_data", ReadOne); }
