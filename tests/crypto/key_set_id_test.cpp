#include "nelvo/crypto/key_set_id.h"

#include <cstring>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/crypto/stored_parts.h"
#include "tests/support/golden.h"
#include "tests/support/stub_dev.h"
#include "tests/support/thrown.h"

using crypto::CKeySetId;
using crypto::SRawKeySetId;

namespace
{

CKeySetId IdOf(const std::string& bytes)
{
    SRawKeySetId raw = {};
    std::memcpy(raw.bytes, bytes.data(), bytes.size());
    return CKeySetId(raw);
}

CKeySetId Id() { return IdOf(Unhex("00112233445566778899aabbccddeeff")); }

CKeySetId::ptr_t Shared(const CKeySetId& id) { return boost::make_shared<CKeySetId>(id); }

CKeySetId::ptr_t None() { return nullptr; }

boost::shared_ptr<CKeySetId::blob_t> Blob(std::size_t size)
{
    return boost::make_shared<CKeySetId::blob_t>(size);
}

std::string Raw(const CKeySetId& id)
{
    return Hex(std::string(reinterpret_cast<const char*>(id.GetRaw().bytes), SRawKeySetId::kSize));
}

void ReadOne(io::io_dev_t& stream) { CKeySetId::DeSerialize(stream); }

} // namespace

TEST(KeySetId, IsSixteenBytes)
{
    EXPECT_EQ(16u, sizeof(SRawKeySetId));
    EXPECT_EQ(16u, sizeof(CKeySetId));
}

TEST(KeySetId, NewOneIsEmpty)
{
    EXPECT_TRUE(CKeySetId().IsEmpty());
    EXPECT_EQ("00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00", Raw(CKeySetId()));
}

TEST(KeySetId, AnyBitMakesItNotEmpty)
{
    for (const std::string& bytes : BitFlips(std::string(16, '\0')))
        EXPECT_FALSE(IdOf(bytes).IsEmpty()) << Hex(bytes);
}

TEST(KeySetId, EmptyPointerIsEmptyToo)
{
    EXPECT_TRUE(CKeySetId::IsEmpty(None()));
    EXPECT_TRUE(CKeySetId::IsEmpty(Shared(CKeySetId())));
    EXPECT_FALSE(CKeySetId::IsEmpty(Shared(Id())));
}

TEST(KeySetId, IsOrderedByItsBytesAsUnsignedNumbers)
{
    EXPECT_TRUE(IdOf("\x01") < IdOf("\x02"));
    EXPECT_FALSE(IdOf("\x02") < IdOf("\x01"));
    EXPECT_FALSE(Id() < Id());
    EXPECT_TRUE(IdOf("\x7f") < IdOf("\x80"));
    EXPECT_TRUE(IdOf("\x01\xff") < IdOf("\x02"));
}

TEST(KeySetId, EachByteCountsInAComparison)
{
    const std::string bytes = Unhex("00112233445566778899aabbccddeeff");
    EXPECT_TRUE(Id() == IdOf(bytes));
    EXPECT_FALSE(Id() != IdOf(bytes));
    for (const std::string& other : BitFlips(bytes))
    {
        EXPECT_TRUE(Id() != IdOf(other)) << Hex(other);
        EXPECT_FALSE(Id() == IdOf(other)) << Hex(other);
        EXPECT_NE(Id() < IdOf(other), IdOf(other) < Id()) << Hex(other);
    }
}

TEST(KeySetId, PointersAndValuesAreEqualInAnyMix)
{
    EXPECT_TRUE(CKeySetId::Equal(Id(), Id()));
    EXPECT_TRUE(CKeySetId::Equal(Shared(Id()), Id()));
    EXPECT_TRUE(CKeySetId::Equal(Id(), Shared(Id())));
    EXPECT_TRUE(CKeySetId::Equal(Shared(Id()), Shared(Id())));
    EXPECT_FALSE(CKeySetId::Equal(Id(), IdOf("x")));
    EXPECT_FALSE(CKeySetId::Equal(Shared(Id()), IdOf("x")));
    EXPECT_FALSE(CKeySetId::Equal(Id(), Shared(IdOf("x"))));
    EXPECT_FALSE(CKeySetId::Equal(Shared(Id()), Shared(IdOf("x"))));
}

TEST(KeySetId, EmptyOnesAreEqualHoweverTheyAreEmpty)
{
    const CKeySetId zero;
    EXPECT_TRUE(CKeySetId::Equal(None(), None()));
    EXPECT_TRUE(CKeySetId::Equal(None(), zero));
    EXPECT_TRUE(CKeySetId::Equal(zero, None()));
    EXPECT_TRUE(CKeySetId::Equal(Shared(zero), None()));
    EXPECT_TRUE(CKeySetId::Equal(None(), Shared(zero)));
    EXPECT_TRUE(CKeySetId::Equal(zero, zero));
}

TEST(KeySetId, EmptyOneEqualsNoOther)
{
    EXPECT_FALSE(CKeySetId::Equal(None(), Id()));
    EXPECT_FALSE(CKeySetId::Equal(Id(), None()));
    EXPECT_FALSE(CKeySetId::Equal(None(), Shared(Id())));
    EXPECT_FALSE(CKeySetId::Equal(Shared(Id()), CKeySetId()));
}

TEST(KeySetId, TextIsLowerCaseDigitsInStorageOrder)
{
    EXPECT_EQ("00112233445566778899aabbccddeeff", Id().ToString());
    EXPECT_EQ("00000000000000000000000000000000", CKeySetId().ToString());
}

TEST(KeySetId, BlobIsACopyOfTheBytes)
{
    const CKeySetId id = Id();
    const auto blob = id.ToBlob();
    EXPECT_EQ("00 11 22 33 44 55 66 77 88 99 aa bb cc dd ee ff", Hex({blob->data(), blob->size()}));
    (*blob)[0] = 'x';
    EXPECT_EQ(Id(), id);
}

TEST(KeySetId, ComesFromABlob)
{
    EXPECT_EQ(Id(), *CKeySetId::FromBlob(Id().ToBlob()));
    EXPECT_EQ(Id(), *CKeySetId::FromBlob(*Id().ToBlob()));
    EXPECT_TRUE(CKeySetId::FromBlob(*Blob(16))->IsEmpty());
}

TEST(KeySetId, NoBlobIsNoId)
{
    EXPECT_EQ(nullptr, CKeySetId::FromBlob(boost::shared_ptr<CKeySetId::blob_t>()));
}

TEST(KeySetId, BlobOfAnotherSizeIsRefusedInTwoTexts)
{
    for (const unsigned size : {0U, 1U, 15U, 17U, 32U})
    {
        EXPECT_EQ("Cannot initialize keyset id by blob: unexpected length of the blob '" +
                      std::to_string(size) + "' ( expected: '16').",
                  Thrown<exc::runtime_exc_t>([&] { CKeySetId::FromBlob(Blob(size)); }));
        EXPECT_EQ("Cannot initialize keyset id by blob: unexpected length of the blob '" +
                      std::to_string(size) + "' (expected: '16').",
                  Thrown<exc::runtime_exc_t>([&] { CKeySetId::FromBlob(*Blob(size)); }));
    }
}

TEST(KeySetId, StoredFormIsTheSizeAndTheBytes)
{
    EXPECT_EQ(Hex(Golden("key_set_id")), Hex(Written([](io::io_dev_t& stream) { Id().Serialize(stream); })));
    EXPECT_EQ(20u, Golden("key_set_id").size());
    EXPECT_EQ(20u, CKeySetId::GetSerializedSize());
}

TEST(KeySetId, IsReadAsItWasWritten)
{
    record_stream_t stream(Golden("key_set_id"));
    EXPECT_EQ(Id(), *CKeySetId::DeSerialize(stream));
    EXPECT_EQ(0u, stream.GetRemaining());
}

TEST(KeySetId, EmptyOneIsWrittenAndReadLikeAnyOther)
{
    const std::string bytes = Written([](io::io_dev_t& stream) { CKeySetId().Serialize(stream); });
    EXPECT_EQ("10 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00", Hex(bytes));
    record_stream_t stream(bytes);
    EXPECT_TRUE(CKeySetId::DeSerialize(stream)->IsEmpty());
}

TEST(KeySetId, MissingBytesAreReadAsZeros)
{
    ExpectEachCut("key_set_id", KeySetIdParts(), Copy<CKeySetId>());
    EXPECT_EQ("fails: Serialized size of the SRawKeySetId is unexpected (0). Expected size: '16'."
              "\n--tr:Failed to deserialize keyset.",
              Outcome("", Copy<CKeySetId>()));
    EXPECT_EQ("10 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00",
              Outcome(Unhex("10 00"), Copy<CKeySetId>()));
    EXPECT_EQ("10 00 00 00 aa bb 00 00 00 00 00 00 00 00 00 00 00 00 00 00",
              Outcome(Unhex("10 00 00 00 aa bb"), Copy<CKeySetId>()));
}

TEST(KeySetId, ShortWriteIsNotNoticed)
{
    ExpectEachShortWrite("key_set_id", KeySetIdParts(), [](io::io_dev_t& stream) { Id().Serialize(stream); });
    full_dev_t device(0);
    EXPECT_NO_THROW(Id().Serialize(device));
}

TEST(KeySetId, AnotherSizeIsRefusedBeforeTheBytesAreRead)
{
    for (const std::uint32_t size : {0u, 1u, 15u, 17u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
    {
        record_stream_t stream(WithNumber("key_set_id", 0, size));
        EXPECT_EQ("Serialized size of the SRawKeySetId is unexpected (" + std::to_string(size) +
                      "). Expected size: '16'.\n--tr:Failed to deserialize keyset.",
                  Thrown<exc::runtime_exc_t>([&] { ReadOne(stream); }));
        EXPECT_EQ(16u, stream.GetRemaining());
    }
}

TEST(KeySetId, FailureOfTheDeviceGetsTheContextWhenReadingAlone)
{
    stub_dev_t device;
    device.Fail("no disk");
    device.Fail("no disk", 1);
    EXPECT_EQ("no disk\n--tr:Failed to deserialize keyset.",
              Thrown<exc::runtime_exc_t>([&] { ReadOne(device); }));
    EXPECT_EQ("no disk", Thrown<std::runtime_error>([&] { Id().Serialize(device); }));
}

TEST(KeySetId, BrokenFormIsReadOrRefused)
{
    ExpectEachBitFlipToBeReadOrRefused("key_set_id", Copy<CKeySetId>());
}
