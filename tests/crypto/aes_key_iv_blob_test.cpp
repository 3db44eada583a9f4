#include "nelvo/crypto/aes_key_iv_blob.h"

#include <type_traits>

#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/crypto/block_limit.h"
#include "tests/crypto/place_in.h"
#include "tests/crypto/stored_parts.h"
#include "tests/support/golden.h"
#include "tests/support/made_secret.h"
#include "tests/support/thrown.h"

using crypto::CAesKeyIVBlob;

namespace
{

std::string Stored(const CAesKeyIVBlob& blob) { return Hex(Text(blob.ToBlob())); }

boost::shared_ptr<CAesKeyIVBlob> Read(std::string_view bytes)
{
    return CAesKeyIVBlob::FromBlob(SharedSecure(bytes));
}

// The stored form of what is read.
std::string Reread(std::string_view bytes) { return Stored(*Read(bytes)); }

void CopyOne(io::io_dev_t& from, io::io_dev_t& to)
{
    wiped_bytes_t bytes(100, '\0');
    bytes.resize(from.read(bytes.data(), bytes.size()));
    const crypto::secure_array_t stored = Read(bytes)->ToBlob();
    to.write(stored.data(), stored.size());
}

const char kEmptyForm[] = "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";

} // namespace

TEST(AesKeyIVBlob, HasNoVirtualOperations) { EXPECT_FALSE(std::is_polymorphic_v<CAesKeyIVBlob>); }

TEST(AesKeyIVBlob, IsASharedKeyAndASharedVectorAndNoLock)
{
    const CAesKeyIVBlob blob(SharedSecure(""), nullptr);
    EXPECT_EQ(2 * sizeof(crypto::secure_array_ptr_t), sizeof(blob));
    EXPECT_EQ(sizeof(crypto::secure_array_ptr_t), PlaceIn(blob, blob.GetIv()));
}

TEST(AesKeyIVBlob, SharesBothArrays)
{
    const auto key = SharedSecure(kSecret<'k'>);
    const auto iv = SharedSecure(kSecret<'i'>);
    const CAesKeyIVBlob blob(key, iv);
    EXPECT_EQ(key->data(), blob.GetKeyBytes());
    EXPECT_EQ(iv->data(), blob.GetIvBytes());
    EXPECT_EQ(iv, blob.GetIv());
}

TEST(AesKeyIVBlob, EmptyArraysHaveNoFirstByte)
{
    const auto emptied = SharedSecure(kSecret<'k'>);
    emptied->resize(0);
    const CAesKeyIVBlob blob(emptied, emptied);
    EXPECT_EQ(nullptr, blob.GetKeyBytes());
    EXPECT_EQ(nullptr, blob.GetIvBytes());
}

TEST(AesKeyIVBlob, VectorNeedNotBeThere)
{
    const CAesKeyIVBlob blob(SharedSecure("\x01"), nullptr);
    EXPECT_EQ(nullptr, blob.GetIvBytes());
    EXPECT_EQ(nullptr, blob.GetIv());
    EXPECT_EQ("00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 00 00 00 00 00 00 00 01",
              Stored(blob));
}

TEST(AesKeyIVBlob, StoredFormHasAHeadOf26Bytes)
{
    const CAesKeyIVBlob blob(SharedSecure(kGoldenKey), SharedSecure(kGoldenVector));
    EXPECT_EQ(Hex(SecretGolden("aes_key_iv_blob")), Stored(blob));
    EXPECT_EQ(26u + 8 + 6, SecretGolden("aes_key_iv_blob").size());
}

TEST(AesKeyIVBlob, StoredFormOfNothingIsTheHead)
{
    EXPECT_EQ(kEmptyForm, Stored({SharedSecure(""), SharedSecure("")}));
}

TEST(AesKeyIVBlob, IsReadAsItWasWritten)
{
    const auto blob = Read(SecretGolden("aes_key_iv_blob"));
    EXPECT_EQ("11 da e7 c8 4d 86 c3 94", Hex(std::string_view(blob->GetKeyBytes(), 8)));
    EXPECT_EQ("a1 aa f7 18 dd 56", Hex(Text(*blob->GetIv())));
    EXPECT_EQ(Hex(SecretGolden("aes_key_iv_blob")), Stored(*blob));
}

TEST(AesKeyIVBlob, ReadingCopiesTheBytesAndLeavesTheForm)
{
    const auto form = SharedSecure(SecretGolden("aes_key_iv_blob"));
    const auto blob = CAesKeyIVBlob::FromBlob(form);
    EXPECT_EQ(std::string_view(SecretGolden("aes_key_iv_blob")), Text(*form));
    form->assign(std::string(40, 'x').data(), 40);
    EXPECT_EQ("11 da e7 c8 4d 86 c3 94", Hex(std::string_view(blob->GetKeyBytes(), 8)));
}

TEST(AesKeyIVBlob, ReservedBytesAreNotLookedAt)
{
    EXPECT_EQ(Hex(SecretGolden("aes_key_iv_blob")),
              Reread(wiped_bytes_t(18, '\xff') + SecretGolden("aes_key_iv_blob").substr(18)));
}

TEST(AesKeyIVBlob, WhatStandsBehindTheFormIsNotRead)
{
    EXPECT_EQ(Hex(SecretGolden("aes_key_iv_blob")), Reread(SecretGolden("aes_key_iv_blob") + "more"));
}

TEST(AesKeyIVBlob, FormIsReadWhereItStands)
{
    const auto form = SharedSecure(SecretGolden("aes_key_iv_blob"));
    form->resize((1U << 20U) + 1);
    const block_limit_t limit(1U << 20U);
    const auto blob = CAesKeyIVBlob::FromBlob(form);
    EXPECT_EQ("a1 aa f7 18 dd 56", Hex(Text(*blob->GetIv())));
}

TEST(AesKeyIVBlob, CutOffFormIsReadWithZeros)
{
    const wiped_bytes_t form = SecretGolden("aes_key_iv_blob");
    for (std::size_t size = 0; size != form.size(); ++size)
    {
        const wiped_bytes_t cut = form.substr(0, size);
        // One byte of a size is enough here, as the others are zero. What is not said has no bytes.
        wiped_bytes_t expected = cut + wiped_bytes_t(form.size() - size, '\0');
        if (size <= 18)
            expected.resize(26);
        else if (size <= 22)
            expected.resize(34);
        EXPECT_EQ(Hex(expected), Reread(cut)) << size;
    }
    EXPECT_EQ(kEmptyForm, Reread(""));
}

TEST(AesKeyIVBlob, SizeMayBeCutOffTooAndIsWhatCame)
{
    EXPECT_EQ(26u + 0x0201, Read(std::string(18, '\0') + "\x01\x02")->ToBlob().size());
}

TEST(AesKeyIVBlob, SizesAreNotLimitedButByTheMemory)
{
    const block_limit_t limit(16U << 20U);
    for (const unsigned part : {3U, 4U})
        for (const std::uint32_t size : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
            EXPECT_EQ(
                "std::bad_alloc\n--tr:Failed to deserialize AES key/IV blob, specified data size: '40'.",
                Thrown<exc::runtime_exc_t>([&] { Read(WithNumber("aes_key_iv_blob", part, size)); }));
}

TEST(AesKeyIVBlob, SmallerSizesMoveWhatFollows)
{
    const auto none = Read(WithNumber("aes_key_iv_blob", 3, 0));
    EXPECT_EQ(nullptr, none->GetKeyBytes());
    EXPECT_EQ("11 da e7 c8 4d 86", Hex(Text(*none->GetIv())));
    const auto one = Read(WithNumber("aes_key_iv_blob", 3, 1));
    EXPECT_EQ("11", Hex(std::string_view(one->GetKeyBytes(), 1)));
    EXPECT_EQ("da e7 c8 4d 86 c3", Hex(Text(*one->GetIv())));
    EXPECT_TRUE(Read(WithNumber("aes_key_iv_blob", 4, 0))->GetIv()->empty());
    EXPECT_EQ("a1", Hex(Text(*Read(WithNumber("aes_key_iv_blob", 4, 1))->GetIv())));
}

TEST(AesKeyIVBlob, BrokenFormIsReadOrRefused)
{
    ExpectEachBitFlipToBeReadOrRefused("aes_key_iv_blob", CopyOne);
}
