#include "nelvo/crypto/processing_policy.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/crypto/key_set_vocabulary.h"
#include "tests/crypto/place_in.h"
#include "tests/support/golden.h"
#include "tests/support/stub_dev.h"
#include "tests/support/thrown.h"

using policy_t = CCryptoProcessingPolicy;

namespace
{

crypto::CKeySetId::ptr_t Id() { return GoldenSet()->GetId(); }

policy_t Read(std::string_view bytes)
{
    record_stream_t stream(bytes);
    policy_t policy;
    policy.DeSerialize(stream);
    return policy;
}

std::string StoredForm(const policy_t& policy)
{
    return WrittenHex([&](io::io_dev_t& stream) { policy.Serialize(stream); });
}

void CopyOne(io::io_dev_t& from, io::io_dev_t& to)
{
    policy_t policy;
    policy.DeSerialize(from);
    policy.Serialize(to);
}

void ReadOne(io::io_dev_t& stream)
{
    policy_t policy;
    policy.DeSerialize(stream);
}

stored_parts_t Parts()
{
    const std::string context = "\n--tr:Failed to deserialize crypto policy.";
    stored_parts_t id = KeySetIdParts();
    id[0].reading += context;
    return Joined({{{part_kind_t::kValue, context, ""}, {part_kind_t::kValue, context, ""}}, id});
}

const policy_t kNone;
const policy_t kDecrypt(true, nullptr, false);

policy_t Encrypt() { return {true, Id(), true}; }

} // namespace

TEST(ProcessingPolicy, IsASwitchAnIdAndAFlagAndNoLock)
{
    EXPECT_EQ(2 * sizeof(std::uint64_t) + sizeof(crypto::CKeySetId::ptr_t), sizeof(policy_t));
    EXPECT_EQ(1, *reinterpret_cast<const char*>(&kDecrypt));
    EXPECT_EQ(sizeof(std::uint64_t), PlaceIn(kDecrypt, kDecrypt.GetTargetKeySetId()));
}

TEST(ProcessingPolicy, NewOneIsToDoNothing)
{
    EXPECT_EQ(0u, kNone.GetType());
    EXPECT_EQ(nullptr, kNone.GetTargetKeySetId());
    EXPECT_FALSE(kNone.GetExtraFlag());
}

TEST(ProcessingPolicy, TypeFollowsFromSwitchAndKeySet)
{
    EXPECT_EQ(policy_t::enNoCryptoProcessing, policy_t(false, nullptr, true).GetType());
    EXPECT_EQ(policy_t::enNoCryptoProcessing, policy_t(false, Id(), false).GetType());
    EXPECT_EQ(policy_t::enDecrypt, policy_t(true, nullptr, true).GetType());
    EXPECT_EQ(policy_t::enCrypt, policy_t(true, Id(), false).GetType());
    EXPECT_EQ(0u, policy_t::enNoCryptoProcessing);
    EXPECT_EQ(1u, policy_t::enDecrypt);
    EXPECT_EQ(2u, policy_t::enCrypt);
}

TEST(ProcessingPolicy, EmptyIdIsAKeySet)
{
    EXPECT_EQ(2u, policy_t(true, boost::make_shared<crypto::CKeySetId>(), false).GetType());
}

TEST(ProcessingPolicy, TypesHaveNames)
{
    EXPECT_EQ("enNoCryptoProcessing", policy_t::TypeToString(0));
    EXPECT_EQ("enDecrypt", policy_t::TypeToString(1));
    EXPECT_EQ("enCrypt", policy_t::TypeToString(2));
    EXPECT_EQ("3", policy_t::TypeToString(3));
    EXPECT_EQ("4294967295", policy_t::TypeToString(0xFFFFFFFF));
}

TEST(ProcessingPolicy, RequiresAKeySetWhateverItsTypeIs)
{
    EXPECT_NO_THROW(Encrypt().RequireKey());
    EXPECT_NO_THROW(policy_t(false, Id(), false).RequireKey());
    EXPECT_NO_THROW(policy_t(true, boost::make_shared<crypto::CKeySetId>(), false).RequireKey());
    EXPECT_EQ("Encryption key is not specified for crypto processing policy (type:'enNoCryptoProcessing').",
              Thrown<exc::runtime_exc_t>([] { kNone.RequireKey(); }));
    EXPECT_EQ("Encryption key is not specified for crypto processing policy (type:'enDecrypt').",
              Thrown<exc::runtime_exc_t>([] { kDecrypt.RequireKey(); }));
}

TEST(ProcessingPolicy, TextHasTypeAndKeySet)
{
    EXPECT_EQ("Policy: 'enNoCryptoProcessing', target keyset ID: 'null'", kNone.ToString());
    EXPECT_EQ("Policy: 'enDecrypt', target keyset ID: 'null'", kDecrypt.ToString());
    EXPECT_EQ("Policy: 'enCrypt', target keyset ID: '00112233445566778899aabbccddeeff'",
              Encrypt().ToString());
    EXPECT_EQ("Policy: 'enNoCryptoProcessing', target keyset ID: '00112233445566778899aabbccddeeff'",
              policy_t(false, Id(), false).ToString());
    EXPECT_EQ("Policy: 'enCrypt', target keyset ID: '00000000000000000000000000000000'",
              policy_t(true, boost::make_shared<crypto::CKeySetId>(), false).ToString());
}

TEST(ProcessingPolicy, StoredFormHasTheIdOnlyToEncrypt)
{
    EXPECT_EQ(Hex(Golden("processing_policy")), StoredForm(Encrypt()));
    EXPECT_EQ(28u, Golden("processing_policy").size());
    EXPECT_EQ("00 00 00 00 00 00 00 00", StoredForm(kNone));
    EXPECT_EQ("01 00 00 00 00 00 00 00", StoredForm(kDecrypt));
    EXPECT_EQ("01 00 00 00 01 00 00 00", StoredForm({true, nullptr, true}));
    EXPECT_EQ("00 00 00 00 01 00 00 00", StoredForm({false, Id(), true}));
}

TEST(ProcessingPolicy, IsReadAsItWasWritten)
{
    const policy_t policy = Read(Golden("processing_policy"));
    EXPECT_EQ(policy_t::enCrypt, policy.GetType());
    EXPECT_TRUE(policy.GetExtraFlag());
    EXPECT_EQ("00112233445566778899aabbccddeeff", policy.GetTargetKeySetId()->ToString());
    ExpectCopyToBeTheSame("processing_policy", CopyOne);
}

TEST(ProcessingPolicy, EmptyIdIsReadAsAKeySet)
{
    const policy_t policy = Read(Unhex("02 00 00 00 00 00 00 00 10 00 00 00") + std::string(16, '\0'));
    EXPECT_EQ(policy_t::enCrypt, policy.GetType());
    EXPECT_FALSE(policy.GetExtraFlag());
}

TEST(ProcessingPolicy, WithoutAKeySetNothingIsReadBehindTheFlag)
{
    for (const char type : {'\0', '\1'})
    {
        record_stream_t stream(type + std::string(7, '\0') + "more");
        policy_t policy = Encrypt();
        policy.DeSerialize(stream);
        EXPECT_EQ(4u, stream.GetRemaining());
        EXPECT_EQ(std::uint32_t(type), policy.GetType());
        EXPECT_EQ(nullptr, policy.GetTargetKeySetId());
        EXPECT_FALSE(policy.GetExtraFlag());
    }
}

TEST(ProcessingPolicy, AnyFlagButZeroIsTrue)
{
    EXPECT_TRUE(Read(Unhex("01 00 00 00 00 00 00 80")).GetExtraFlag());
    EXPECT_FALSE(Read(Unhex("01 00 00 00 00 00 00 00")).GetExtraFlag());
}

TEST(ProcessingPolicy, UnknownTypeIsReadAsEnCrypt)
{
    for (const std::uint32_t type : {3u, 0x80000000u, 0xFFFFFFFFu})
    {
        const policy_t policy = Read(WithNumber("processing_policy", 0, type));
        EXPECT_EQ(policy_t::enCrypt, policy.GetType());
        EXPECT_EQ("00112233445566778899aabbccddeeff", policy.GetTargetKeySetId()->ToString());
    }
}

TEST(ProcessingPolicy, MissingBytesFailOrAreReadAsZeros)
{
    ExpectEachCut("processing_policy", Parts(), CopyOne);
    EXPECT_EQ("Serialized size of the SRawKeySetId is unexpected (0). Expected size: '16'."
              "\n--tr:Failed to deserialize keyset.\n--tr:Failed to deserialize crypto policy.",
              FailureToRead(Golden("processing_policy").substr(0, 8), ReadOne));
}

TEST(ProcessingPolicy, WrongSizeOfTheIdIsRefused)
{
    for (const std::uint32_t size : {0u, 1u, 17u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ("Serialized size of the SRawKeySetId is unexpected (" + std::to_string(size) +
                      "). Expected size: '16'.\n--tr:Failed to deserialize keyset."
                      "\n--tr:Failed to deserialize crypto policy.",
                  FailureToRead(WithNumber("processing_policy", 2, size), ReadOne));
}

TEST(ProcessingPolicy, FailedReadLeavesIt)
{
    for (const std::string& prefix : Prefixes(Golden("processing_policy").substr(0, 9)))
    {
        policy_t policy(true, IdOf(1), false);
        record_stream_t stream(prefix);
        EXPECT_ANY_THROW(policy.DeSerialize(stream)) << prefix.size();
        EXPECT_EQ("Policy: 'enCrypt', target keyset ID: '01000000000000000000000000000000'",
                  policy.ToString());
        EXPECT_FALSE(policy.GetExtraFlag());
    }
}

TEST(ProcessingPolicy, FailureOfTheDeviceHasTheContextWhenReadingAlone)
{
    stub_dev_t device;
    device.Fail("no disk");
    device.Fail("no disk", 1);
    EXPECT_EQ("no disk\n--tr:Failed to deserialize crypto policy.",
              Thrown<exc::runtime_exc_t>([&] { ReadOne(device); }));
    EXPECT_EQ("no disk", Thrown<std::runtime_error>([&] { kNone.Serialize(device); }));
}

TEST(ProcessingPolicy, ShortWriteOfTheIdIsNotNoticed)
{
    ExpectEachShortWrite("processing_policy", Parts(),
                         [](io::io_dev_t& stream) { Encrypt().Serialize(stream); });
}

TEST(ProcessingPolicy, BrokenFormIsReadOrRefused)
{
    ExpectEachBitFlipToBeReadOrRefused("processing_policy", CopyOne);
}
