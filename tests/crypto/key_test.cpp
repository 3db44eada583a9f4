#include "nelvo/crypto/key.h"

#include <cstring>
#include <future>
#include <type_traits>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/crypto/block_limit.h"
#include "tests/crypto/stored_parts.h"
#include "tests/support/golden.h"
#include "tests/support/made_secret.h"
#include "tests/support/stub_dev.h"
#include "tests/support/thrown.h"

using crypto::CKey;
using key_ptr_t = boost::shared_ptr<CKey>;

namespace
{

constexpr std::string_view kLongerKey = kSecret<'k', 17>;
constexpr std::string_view kKey = kLongerKey.substr(0, 16);

const char kReadingContext[] = "\n--tr:Failed to de-serialize encryption key from memory stream.";
const char kCastContext[] = "\n--tr:Failed to cast key blob to AES key.";

key_ptr_t Key(std::uint32_t type, std::string_view bytes)
{
    return boost::make_shared<CKey>(type, Secure(bytes));
}

// The key with another byte in that place.
key_ptr_t KeyWithout(std::size_t place)
{
    key_ptr_t key = Key(1, kKey);
    ++key->GetData()[place];
    return key;
}

key_ptr_t Read(std::string_view bytes)
{
    record_stream_t stream(bytes);
    return CKey::DeSerialize(stream);
}

std::string Stored(const CKey& key)
{
    return WrittenHex([&](io::io_dev_t& stream) { key.Serialize(stream); });
}

std::string FailureToCast(const CKey& key)
{
    return Thrown<exc::runtime_exc_t>([&] { key.ToAesKeyIVBlob(); });
}

} // namespace

TEST(Key, HasNoVirtualOperations) { EXPECT_FALSE(std::is_polymorphic_v<CKey>); }

TEST(Key, IsATypeWithAShareOfItsBytesAndNoLock)
{
    EXPECT_EQ(sizeof(std::uint64_t) + sizeof(crypto::secure_array_ptr_t), sizeof(CKey));
    const key_ptr_t key = Key(0x01020304, "");
    std::uint32_t first = 0;
    std::memcpy(&first, static_cast<const void*>(key.get()), sizeof(first));
    EXPECT_EQ(0x01020304u, first);
}

TEST(Key, HasATypeAndItsOwnBytes)
{
    crypto::secure_array_t bytes = Secure(kKey);
    const CKey key(7, bytes);
    bytes[0] = 'x';
    EXPECT_EQ(7u, key.GetType());
    EXPECT_EQ(kKey, Text(key.GetData()));
}

TEST(Key, GivesItsOwnBytesOut)
{
    CKey key(0, Secure(kKey));
    key.GetData()[0] = 'K';
    EXPECT_EQ('K', Text(key.GetData())[0]);
    EXPECT_EQ(kKey.substr(1), Text(key.GetData()).substr(1));
    EXPECT_EQ(&key.GetData(), &static_cast<const CKey&>(key).GetData());
}

TEST(Key, CopiesOfItsBytesAreNotItsOwn)
{
    const key_ptr_t key = Key(0, kKey);
    const auto copy = key->CopyData();
    EXPECT_EQ(kKey, Text(*copy));
    (*copy)[0] = 'x';
    EXPECT_EQ(kKey, Text(key->GetData()));
}

TEST(Key, CloneHasTheTypeAndBytesOfItsOwn)
{
    const key_ptr_t key = Key(2, kKey);
    const key_ptr_t clone = key->Clone();
    EXPECT_TRUE(clone->Equals(key));
    clone->Wipe();
    EXPECT_EQ(2u, key->GetType());
    EXPECT_EQ(kKey, Text(key->GetData()));
}

TEST(Key, EqualsOneOfTheSameTypeAndBytes)
{
    EXPECT_TRUE(Key(1, kKey)->Equals(Key(1, kKey)));
    EXPECT_TRUE(Key(1, "")->Equals(Key(1, "")));
    EXPECT_FALSE(Key(1, "")->Equals(Key(2, "")));
}

TEST(Key, EqualsNoneThatDiffersOrIsNotThere)
{
    const key_ptr_t key = Key(1, kKey);
    EXPECT_FALSE(key->Equals(nullptr));
    EXPECT_FALSE(key->Equals(Key(2, kKey)));
    EXPECT_FALSE(key->Equals(Key(1, kLongerKey)));
    EXPECT_FALSE(key->Equals(Key(1, kKey.substr(1))));
    EXPECT_FALSE(key->Equals(Key(1, kLongerKey.substr(0, kKey.size() - 1))));
    EXPECT_FALSE(key->Equals(KeyWithout(0)));
    EXPECT_FALSE(key->Equals(KeyWithout(kKey.size() - 1)));
    EXPECT_FALSE(key->Equals(Key(1, "")));
}

TEST(Key, ManyThreadsMayReadItAtOnce)
{
    const key_ptr_t key = Key(1, kKey);
    const auto read = [&key]
    {
        for (int i = 0; i != 100; ++i)
        {
            EXPECT_TRUE(key->Equals(key->Clone()));
            EXPECT_EQ(kKey, Text(*key->CopyData()));
            EXPECT_EQ(1u, key->GetType());
            EXPECT_EQ("01 00 00 00 10 00 00 00", Stored(*key).substr(0, 23));
        }
    };
    auto other = std::async(std::launch::async, read);
    read();
    other.get();
}

TEST(Key, WipedOneHasNoBytesAndAnUnknownType)
{
    const key_ptr_t key = Key(0, kKey);
    const char* const bytes = key->GetData().data();
    key->Wipe();
    EXPECT_EQ(101u, key->GetType());
    EXPECT_TRUE(key->GetData().empty());
    EXPECT_EQ(std::string(kKey.size(), '\0'), std::string_view(bytes, kKey.size())); // which the array keeps
}

TEST(Key, WipeLeavesTheTypeOfAnEmptyKey)
{
    const key_ptr_t key = Key(0, "");
    key->Wipe();
    EXPECT_EQ(0u, key->GetType());
}

TEST(Key, WipeCanBeRepeated)
{
    const key_ptr_t key = Key(0, kKey);
    key->Wipe();
    key->Wipe();
    EXPECT_EQ(101u, key->GetType());
}

TEST(Key, EveryKeyIsSensitive)
{
    for (const std::uint32_t type : {0u, 1u, 2u, 101u, 7u, 0xFFFFFFFFu})
        EXPECT_TRUE(Key(type, kKey)->IsSensitive()) << type;
    EXPECT_TRUE(Key(1, "")->IsSensitive());
}

TEST(Key, StoredFormIsTypeSizeAndBytes)
{
    EXPECT_EQ(Hex(SecretGolden("crypto_key")), Stored(*Key(1, kGoldenKey)));
}

TEST(Key, IsReadAsItWasWritten)
{
    const key_ptr_t key = Read(SecretGolden("crypto_key"));
    EXPECT_EQ(1u, key->GetType());
    EXPECT_EQ("11 da e7 c8 4d 86 c3 94", Hex(Text(key->GetData())));
    ExpectCopyToBeTheSame("crypto_key", Copy<CKey>());
}

TEST(Key, EmptyOneIsEightBytes)
{
    EXPECT_EQ("02 00 00 00 00 00 00 00", Stored(*Key(2, "")));
    const key_ptr_t key = Read(Unhex("02 00 00 00 00 00 00 00"));
    EXPECT_EQ(2u, key->GetType());
    EXPECT_TRUE(key->GetData().empty());
}

TEST(Key, AnyTypeIsReadAsItStands)
{
    for (const std::uint32_t type : {3u, 101u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ(type, Read(WithNumber("crypto_key", 0, type))->GetType());
}

TEST(Key, MissingBytesAreReadAsZeros)
{
    ExpectEachCut("crypto_key", KeyParts(), Copy<CKey>());
    const key_ptr_t key = Read(Unhex("01 00 00 00 05 00 00 00 aa bb"));
    EXPECT_EQ("aa bb 00 00 00", Hex(Text(key->GetData())));
}

TEST(Key, CountOfTheBytesThatADeviceReportsIsNotLookedAt)
{
    stub_dev_t device(SecretGolden("crypto_key"));
    device.Answer(std::uint64_t(-1), 2);
    EXPECT_EQ(std::string(8, '\0'), Text(CKey::DeSerialize(device)->GetData()));
}

TEST(Key, FailureToReadItsHeadHasAContext)
{
    EXPECT_EQ(ShortValue(0, 4) + kReadingContext, FailureToRead("", CKey::DeSerialize));
    EXPECT_EQ(ShortValue(3, 4) + kReadingContext,
              FailureToRead(Unhex("01 00 00 00 08 00 00"), CKey::DeSerialize));
}

TEST(Key, FailureOfTheDeviceHasTheContextToo)
{
    stub_dev_t device(SecretGolden("crypto_key"));
    device.Fail("no disk", 2);
    EXPECT_EQ(std::string("no disk") + kReadingContext,
              Thrown<exc::runtime_exc_t>([&] { CKey::DeSerialize(device); }));
}

TEST(Key, SizeIsNotLimitedButByTheMemory)
{
    EXPECT_EQ(std::size_t{16} << 20U, Read(WithNumber("crypto_key", 1, 16U << 20U))->GetData().size());
    EXPECT_EQ("", Text(Read(WithNumber("crypto_key", 1, 0))->GetData()));
    EXPECT_EQ("\x11", Text(Read(WithNumber("crypto_key", 1, 1))->GetData()));
    const block_limit_t limit(16U << 20U);
    for (const std::uint32_t size : {(16U << 20U) + 1, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ(std::string("std::bad_alloc") + kReadingContext,
                  FailureToRead(WithNumber("crypto_key", 1, size), CKey::DeSerialize));
}

TEST(Key, ShortWriteOfTheBytesIsNotNoticed)
{
    const key_ptr_t key = Read(SecretGolden("crypto_key"));
    ExpectEachShortWrite("crypto_key", KeyParts(), [&](io::io_dev_t& stream) { key->Serialize(stream); });
    full_dev_t device(8);
    EXPECT_NO_THROW(key->Serialize(device));
}

TEST(Key, FailureToWriteHasNoContext)
{
    const key_ptr_t key = Key(0, kKey);
    const auto write = [&](io::io_dev_t& stream) { key->Serialize(stream); };
    EXPECT_EQ(ShortWrite(3, 4), FailureToWrite(3, write));
    EXPECT_EQ(ShortWrite(0, 4), FailureToWrite(4, write));
    stub_dev_t device;
    device.Fail("no disk");
    EXPECT_EQ("no disk", Thrown<std::runtime_error>([&] { key->Serialize(device); }));
}

TEST(Key, BrokenFormIsReadOrRefused) { ExpectEachBitFlipToBeReadOrRefused("crypto_key", Copy<CKey>()); }

TEST(Key, AesKeyHoldsABlob)
{
    const key_ptr_t key = Key(2, SecretGolden("aes_key_iv_blob"));
    const auto blob = key->ToAesKeyIVBlob();
    key->Wipe(); // shared with nobody
    EXPECT_EQ("11 da e7 c8 4d 86 c3 94", Hex(std::string_view(blob->GetKeyBytes(), 8)));
    EXPECT_EQ("a1 aa f7 18 dd 56", Hex(Text(*blob->GetIv())));
}

TEST(Key, BlobIsReadWhereItStandsInTheKey)
{
    crypto::secure_array_t form = Secure(SecretGolden("aes_key_iv_blob"));
    form.resize((1U << 20U) + 1);
    const CKey key(2, form);
    const block_limit_t limit(1U << 20U);
    const auto blob = key.ToAesKeyIVBlob();
    EXPECT_EQ("a1 aa f7 18 dd 56", Hex(Text(*blob->GetIv())));
}

TEST(Key, OfAnotherTypeIsNoAesKey)
{
    const wiped_bytes_t blob = SecretGolden("aes_key_iv_blob");
    EXPECT_EQ(std::string("Unexpected key type: 'enPrivateKey'.") + kCastContext,
              FailureToCast(*Key(0, blob)));
    EXPECT_EQ(std::string("Unexpected key type: 'enPublicKey'.") + kCastContext,
              FailureToCast(*Key(1, blob)));
    EXPECT_EQ(std::string("Unexpected key type: 'enUnknownKey'.") + kCastContext,
              FailureToCast(*Key(101, blob)));
    EXPECT_EQ(std::string("Unexpected key type: '-1'.") + kCastContext,
              FailureToCast(*Key(0xFFFFFFFF, blob)));
}

TEST(Key, BlobThatCannotBeReadHasBothContexts)
{
    const key_ptr_t key = Key(2, WithNumber("aes_key_iv_blob", 3, 0xFFFFFFFF));
    const block_limit_t limit(16U << 20U);
    EXPECT_EQ("std::bad_alloc\n--tr:Failed to deserialize AES key/IV blob, specified data size: '40'."
              "\n--tr:Failed to cast key blob to AES key.",
              FailureToCast(*key));
}
