#include "nelvo/crypto/repair_record.h"

#include <cstring>
#include <type_traits>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/crypto/block_limit.h"
#include "tests/crypto/place_in.h"
#include "tests/crypto/stored_parts.h"
#include "tests/support/golden.h"
#include "tests/support/stub_dev.h"
#include "tests/support/thrown.h"

using crypto::CKeySetId;
using crypto::CRestoreKeyRepairRec;

namespace
{

const char kReadingContext[] = "\n--tr:Failed to de-serialize keyset repair record from memory stream.";
const char kWritingContext[] = "\n--tr:Failed to serialize keyset repair record from memory stream.";

CKeySetId::ptr_t MasterId()
{
    crypto::SRawKeySetId raw = {};
    std::memcpy(raw.bytes, Unhex("0f1e2d3c4b5a69788796a5b4c3d2e1f0").data(), sizeof(raw.bytes));
    return boost::make_shared<CKeySetId>(raw);
}

boost::shared_ptr<CRestoreKeyRepairRec> Read(std::string_view bytes)
{
    record_stream_t stream(bytes);
    return CRestoreKeyRepairRec::DeSerialize(stream);
}

std::string Stored(const CRestoreKeyRepairRec& record)
{
    return WrittenHex([&](io::io_dev_t& stream) { record.Serialize(stream); });
}

} // namespace

TEST(RepairRecord, HasNoVirtualOperations) { EXPECT_FALSE(std::is_polymorphic_v<CRestoreKeyRepairRec>); }

TEST(RepairRecord, IsASharedIdAndSharedData)
{
    const CRestoreKeyRepairRec record(nullptr, nullptr);
    EXPECT_EQ(sizeof(CKeySetId::ptr_t) + sizeof(crypto::secure_array_ptr_t), sizeof(record));
    EXPECT_EQ(0u, PlaceIn(record, record.GetMasterKeySetId()));
}

TEST(RepairRecord, SharesIdAndData)
{
    const CKeySetId::ptr_t id = MasterId();
    const auto data = SharedSecure(kGoldenRepairData);
    const CRestoreKeyRepairRec record(id, data);
    EXPECT_EQ(id, record.GetMasterKeySetId());
    EXPECT_EQ(data, record.GetData());
    EXPECT_EQ(&record.GetData(), &record.GetData());
}

TEST(RepairRecord, StoredFormIsIdAndDataWithTheirSizes)
{
    EXPECT_EQ(Hex(SecretGolden("repair_record")), Stored({MasterId(), SharedSecure(kGoldenRepairData)}));
}

TEST(RepairRecord, IsReadAsItWasWritten)
{
    const auto record = Read(SecretGolden("repair_record"));
    EXPECT_EQ("0f1e2d3c4b5a69788796a5b4c3d2e1f0", record->GetMasterKeySetId()->ToString());
    EXPECT_EQ(kGoldenRepairData, Text(*record->GetData()));
    ExpectCopyToBeTheSame("repair_record", Copy<CRestoreKeyRepairRec>());
}

TEST(RepairRecord, NoIdIsWrittenAsTheEmptyOne)
{
    const std::string stored = "10 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 00 00 00 78";
    EXPECT_EQ(stored, Stored({nullptr, SharedSecure("x")}));
    EXPECT_EQ(stored, Stored({boost::make_shared<CKeySetId>(), SharedSecure("x")}));
    const auto record = Read(Unhex(stored));
    ASSERT_NE(nullptr, record->GetMasterKeySetId());
    EXPECT_TRUE(record->GetMasterKeySetId()->IsEmpty());
}

TEST(RepairRecord, NoDataIsFourZeros)
{
    const std::string stored = "10 00 00 00 0f 1e 2d 3c 4b 5a 69 78 87 96 a5 b4 c3 d2 e1 f0 00 00 00 00";
    EXPECT_EQ(stored, Stored({MasterId(), SharedSecure("")}));
    EXPECT_TRUE(Read(Unhex(stored))->GetData()->empty());
}

TEST(RepairRecord, MissingBytesAreReadAsZeros)
{
    ExpectEachCut("repair_record", RepairRecordParts(), Copy<CRestoreKeyRepairRec>());
    EXPECT_EQ("a9 d2 00 00 00 00", Hex(Text(*Read(SecretGolden("repair_record").substr(0, 26))->GetData())));
}

TEST(RepairRecord, CutOffIdIsNoticedByTheSizeBehindItAlone)
{
    EXPECT_EQ(ShortValue(0, 4) + kReadingContext,
              FailureToRead(SecretGolden("repair_record").substr(0, 10), CRestoreKeyRepairRec::DeSerialize));
    stub_dev_t device(Unhex("10 00 00 00 0f 1e 01 00 00 00 78"));
    device.TakeOnly(2, 1);
    const auto record = CRestoreKeyRepairRec::DeSerialize(device);
    EXPECT_EQ("0f1e0000000000000000000000000000", record->GetMasterKeySetId()->ToString());
    EXPECT_EQ("x", Text(*record->GetData()));
}

TEST(RepairRecord, AnotherSizeOfTheIdIsRefusedBeforeItIsRead)
{
    for (const std::uint32_t size : {0u, 1u, 15u, 17u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
    {
        record_stream_t stream(WithNumber("repair_record", 0, size));
        EXPECT_EQ("The size of the serialized keyset id is unexpected (" + std::to_string(size) + ")." +
                      kReadingContext,
                  Thrown<exc::runtime_exc_t>([&] { CRestoreKeyRepairRec::DeSerialize(stream); }));
        EXPECT_EQ(SecretGolden("repair_record").size() - 4, stream.GetRemaining());
    }
}

TEST(RepairRecord, SizeOfTheDataIsNotLimitedButByTheMemory)
{
    EXPECT_EQ("", Text(*Read(WithNumber("repair_record", 2, 0))->GetData()));
    EXPECT_EQ("\xa9", Text(*Read(WithNumber("repair_record", 2, 1))->GetData()));
    const block_limit_t limit(16U << 20U);
    for (const std::uint32_t size : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ(std::string("std::bad_alloc") + kReadingContext,
                  FailureToRead(WithNumber("repair_record", 2, size), CRestoreKeyRepairRec::DeSerialize));
}

TEST(RepairRecord, FailureOfTheDeviceHasTheContexts)
{
    stub_dev_t device(SecretGolden("repair_record"));
    device.Fail("no disk", 3);
    EXPECT_EQ(std::string("no disk") + kReadingContext,
              Thrown<exc::runtime_exc_t>([&] { CRestoreKeyRepairRec::DeSerialize(device); }));
    device.Fail("no disk", 1);
    EXPECT_EQ(std::string("no disk") + kWritingContext,
              Thrown<exc::runtime_exc_t>(
                  [&] { CRestoreKeyRepairRec(MasterId(), SharedSecure("x")).Serialize(device); }));
}

TEST(RepairRecord, FailureToWriteSaysFromMemoryStream)
{
    const CRestoreKeyRepairRec record(MasterId(), SharedSecure(kGoldenRepairData));
    EXPECT_EQ(ShortWrite(0, 4) + "\n--tr:Failed to serialize keyset repair record from memory stream.",
              FailureToWrite(0, [&](io::io_dev_t& stream) { record.Serialize(stream); }));
}

TEST(RepairRecord, ShortWriteOfIdAndDataIsNotNoticed)
{
    const CRestoreKeyRepairRec record(MasterId(), SharedSecure(kGoldenRepairData));
    ExpectEachShortWrite("repair_record", RepairRecordParts(),
                         [&](io::io_dev_t& stream) { record.Serialize(stream); });
    stub_dev_t device;
    device.TakeOnly(0, 1);
    device.TakeOnly(0, 3);
    EXPECT_NO_THROW(record.Serialize(device));
    EXPECT_EQ("10 00 00 00 06 00 00 00", Hex(device.written()));
}

TEST(RepairRecord, BrokenFormIsReadOrRefused)
{
    ExpectEachBitFlipToBeReadOrRefused("repair_record", Copy<CRestoreKeyRepairRec>());
}
