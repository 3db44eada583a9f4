#include "nelvo/crypto/key_set.h"

#include <new>
#include <thread>
#include <type_traits>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/logging/log.h"
#include "tests/crypto/block_limit.h"
#include "tests/crypto/key_set_vocabulary.h"
#include "tests/crypto/place_in.h"
#include "tests/support/golden.h"
#include "tests/support/stub_dev.h"
#include "tests/support/thrown.h"
#include "tests/support/time_zone.h"

using crypto::CKeySet;

namespace
{

CKeySet::ptr_t Read(std::string_view bytes)
{
    record_stream_t stream(bytes);
    return CKeySet::DeSerialize(stream);
}

CKeySet::ptr_t SetWithHint(const std::wstring& hint)
{
    return boost::make_shared<CKeySet>(IdOf(1), 1, hint, 5, CKeySet::keys_t(), CKeySet::repair_records_t(),
                                       crypto::SKeySetTime());
}

CKeySet::ptr_t SetOfTime(std::uint64_t units)
{
    return boost::make_shared<CKeySet>(
        IdOf(1), 1, L"", 5, CKeySet::keys_t(), CKeySet::repair_records_t(),
        crypto::SKeySetTime{static_cast<std::uint32_t>(units), static_cast<std::uint32_t>(units >> 32U)});
}

std::string TimeText(std::uint64_t seconds) { return SetOfTime(seconds * 10'000'000)->GetCreationTimeText(); }

stored_parts_t GoldenParts()
{
    const stored_parts_t number = {PlainPart()};
    const stored_parts_t hint = {PlainPart(), {part_kind_t::kText, "", ""}};
    return Joined({number, number, hint, number, number, number, number, number, KeyParts(), KeyParts(),
                   RepairRecordParts(), KeySetIdParts()});
}

const char kEmptySet[] =
    "01 00 00 00 01 00 00 00 04 00 00 00 68 69 6e 74 05 00 00 00 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 "
    "10 00 00 00 07 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";

const char kZeroId[] = "10 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";

} // namespace

TEST(KeySet, HasNoVirtualOperations) { EXPECT_FALSE(std::is_polymorphic_v<CKeySet>); }

TEST(KeySet, HintStandsBehindLockAlgorithmAndId)
{
    const CKeySet::ptr_t key_set = MakeSet(1);
    EXPECT_EQ(sizeof(boost::recursive_mutex) + sizeof(std::uint64_t) + sizeof(crypto::CKeySetId::ptr_t),
              PlaceIn(*key_set, key_set->GetHint()));
}

TEST(KeySet, HasWhatItWasMadeOf)
{
    const auto key = MakeKey(0, "k");
    const auto record = MakeRecord(9, "d");
    const auto id = IdOf(1);
    const CKeySet key_set(id, 7, L"hint", 3, {key}, {record}, {5, 6});
    EXPECT_EQ(id, key_set.GetId());
    EXPECT_EQ(7u, key_set.GetAlgorithm());
    EXPECT_EQ(L"hint", key_set.GetHint());
    EXPECT_EQ(3u, key_set.GetRole());
    EXPECT_EQ(CKeySet::keys_t{key}, key_set.GetKeys());
    EXPECT_EQ(CKeySet::repair_records_t{record}, key_set.GetRepairRecords());
    EXPECT_EQ(5u, key_set.GetCreationTime().low);
    EXPECT_EQ(6u, key_set.GetCreationTime().high);
}

TEST(KeySet, ListsItWasMadeOfAreCopied)
{
    CKeySet::keys_t keys = {MakeKey(0, "a")};
    const CKeySet::ptr_t key_set = MakeSet(1, keys);
    keys.clear();
    EXPECT_EQ("0:a", KeysOf(*key_set));
}

TEST(KeySet, RoleCanBeChanged)
{
    const CKeySet::ptr_t key_set = MakeSet(1);
    key_set->SetRole(6);
    EXPECT_EQ(6u, key_set->GetRole());
    EXPECT_EQ("archive", key_set->GetRoleName());
}

TEST(KeySet, NamesAreThoseOfAlgorithmAndRole)
{
    EXPECT_EQ("RSA", MakeSet(1)->GetAlgorithmName());
    EXPECT_EQ("AES256CBC", SetWithAlgorithm(1, 0)->GetAlgorithmName());
    EXPECT_EQ("Unknown Algorithm", SetWithAlgorithm(1, 2)->GetAlgorithmName());
    EXPECT_EQ("user", MakeSet(1)->GetRoleName());
    EXPECT_EQ("unknown ('0')", SetWithRole(1, 0)->GetRoleName());
}

TEST(KeySet, HintIsNoCopy)
{
    const CKeySet::ptr_t key_set = MakeSet(1);
    EXPECT_EQ(&key_set->GetHint(), &key_set->GetHint());
}

TEST(KeySet, ListsGoInAndOutAsCopiesThatShareTheirElements)
{
    const CKeySet::ptr_t key_set = MakeSet(1);
    CKeySet::keys_t keys = {MakeKey(0, "a"), MakeKey(1, "b")};
    CKeySet::repair_records_t records = {MakeRecord(1, "r")};
    key_set->SetKeys(keys);
    key_set->SetRepairRecords(records);
    EXPECT_EQ(keys, key_set->GetKeys());
    EXPECT_EQ(records, key_set->GetRepairRecords());
    keys.clear();
    records.clear();
    key_set->GetKeys().clear();
    key_set->GetRepairRecords().clear();
    EXPECT_EQ(2u, key_set->GetKeys().size());
    EXPECT_EQ(1u, key_set->GetRepairRecords().size());
}

TEST(KeySet, AddsBehindWhatThereIs)
{
    const CKeySet::ptr_t key_set = MakeSet(1, {MakeKey(1, "a")}, {MakeRecord(1, "r")});
    const auto id = IdOf(2);
    const auto data = SharedSecure(kSecret<'d'>);
    key_set->AddKey(MakeKey(0, "b"));
    key_set->AddRepairRecord(id, data);
    EXPECT_EQ("1:a 0:b", KeysOf(*key_set));
    ASSERT_EQ(2u, key_set->GetRepairRecords().size());
    EXPECT_EQ(id, key_set->GetRepairRecords()[1]->GetMasterKeySetId());
    EXPECT_EQ(data, key_set->GetRepairRecords()[1]->GetData());
}

TEST(KeySet, FindsTheFirstKeyOfAType)
{
    const CKeySet::ptr_t key_set = MakeSet(1, {MakeKey(1, "a"), MakeKey(0, "b"), MakeKey(0, "c")});
    EXPECT_EQ(key_set->GetKeys()[1], key_set->FindKey(0));
    EXPECT_EQ(key_set->GetKeys()[0], key_set->FindKey(1));
    EXPECT_EQ(nullptr, key_set->FindKey(2));
    EXPECT_EQ(nullptr, MakeSet(1)->FindKey(0));
}

TEST(KeySet, TellsWhetherAListIsEmpty)
{
    EXPECT_FALSE(MakeSet(1)->HasKeys());
    EXPECT_FALSE(MakeSet(1)->HasRepairRecords());
    EXPECT_TRUE(MakeSet(1, {MakeKey(0, "")})->HasKeys());
    EXPECT_TRUE(MakeSet(1, {}, {MakeRecord(1, "")})->HasRepairRecords());
}

TEST(KeySet, WipedKeysStayInTheListOfEachThatSharesThem)
{
    const CKeySet::ptr_t key_set = MakeSet(1, {MakeKey(0, "a"), MakeKey(1, "b"), MakeKey(2, "")});
    const CKeySet::ptr_t clone = key_set->Clone();
    key_set->WipeKeys();
    EXPECT_EQ("101: 101: 2:", KeysOf(*key_set));
    EXPECT_EQ("101: 101: 2:", KeysOf(*clone));
}

TEST(KeySet, CreationTimeTextCountsMonthsFrom0AndYearsFrom1900)
{
    EXPECT_EQ("2/2/120 12:00:00", TimeText(1583150400));
    EXPECT_EQ("1/0/70 00:00:00", TimeText(0));
    EXPECT_EQ("31/11/99 23:59:09", TimeText(946684749));
    EXPECT_EQ("2/2/120 12:00:00", GoldenSet()->GetCreationTimeText());
}

TEST(KeySet, CreationTimeTextIsThatOfUtcEverywhere)
{
    const time_zone_t zone("IST-5:30");
    EXPECT_EQ("2/2/120 12:00:00", TimeText(1583150400));
}

TEST(KeySet, CreationTimeLosesWhatIsBelowASecond)
{
    EXPECT_EQ("1/0/70 00:00:00", SetOfTime(9'999'999)->GetCreationTimeText());
    EXPECT_EQ("1/0/70 00:00:01", SetOfTime(10'000'000)->GetCreationTimeText());
}

TEST(KeySet, CreationTimeHas64UnsignedBits)
{
    EXPECT_EQ("1/0/70 00:07:09", SetOfTime(std::uint64_t{1} << 32U)->GetCreationTimeText());
    EXPECT_EQ("28/4/58525 05:36:10", SetOfTime(UINT64_MAX)->GetCreationTimeText());
}

TEST(KeySet, TextHasTheIdTheRoleAndTheCounts)
{
    EXPECT_EQ("ID: 01000000000000000000000000000000 (user), keys: 0, repair records: 0 (master keys:)",
              MakeSet(1)->ToString());
    EXPECT_EQ(
        "ID: 01000000000000000000000000000000 (unknown ('0')), keys: 0, repair records: 0 (master keys:)",
        SetWithRole(1, 0)->ToString());
}

TEST(KeySet, TextNamesTheMasterKeysInOrder)
{
    EXPECT_EQ("ID: 01000000000000000000000000000000 (user), keys: 1, repair records: 2 (master keys: "
              "0b000000000000000000000000000000 0a000000000000000000000000000000)",
              MakeSet(1, {MakeKey(0, "a")}, {MakeRecord(11, ""), MakeRecord(10, "")})->ToString());
}

TEST(KeySet, TextOfMissingIdsIsThatOfEmptyOnes)
{
    const CKeySet::ptr_t key_set = MakeSet(1);
    const CKeySet nameless(nullptr, 1, L"", 5, {}, {}, {});
    key_set->AddRepairRecord(nullptr, SharedSecure(""));
    EXPECT_EQ("ID: 00000000000000000000000000000000 (user), keys: 0, repair records: 0 (master keys:)",
              nameless.ToString());
    EXPECT_EQ("ID: 01000000000000000000000000000000 (user), keys: 0, repair records: 1 (master keys: "
              "00000000000000000000000000000000)",
              key_set->ToString());
}

TEST(KeySet, MaskingThatBeginsAfterTheFirstTextIsTooLate)
{
    const std::string text = MakeSet(1)->ToString();
    logging::GetProcessLog()->set_mask_sensitive(true);
    EXPECT_EQ(text, MakeSet(1)->ToString());
    logging::GetProcessLog()->set_mask_sensitive(false);
}

TEST(KeySet, EqualsOneWithTheSameValuesAndKeys)
{
    const CKeySet::ptr_t left = MakeSet(1, {MakeKey(0, "a"), MakeKey(1, "b")});
    EXPECT_TRUE(left->IsEqual(left));
    EXPECT_TRUE(left->IsEqual(MakeSet(1, {MakeKey(0, "a"), MakeKey(1, "b")})));
    EXPECT_TRUE(MakeSet(1, {MakeKey(0, "a"), MakeKey(1, "b")})
                    ->IsEqual(MakeSet(1, {MakeKey(1, "b"), MakeKey(0, "a")}))); // in any order
}

TEST(KeySet, EqualsNoneThatDiffersOrIsNotThere)
{
    EXPECT_FALSE(MakeSet(1)->IsEqual(nullptr));
    EXPECT_FALSE(MakeSet(1)->IsEqual(SetWithAlgorithm(1, 2)));
    EXPECT_FALSE(MakeSet(1)->IsEqual(SetWithRole(1, 4)));
    EXPECT_FALSE(MakeSet(1)->IsEqual(SetWithHint(L"hints")));
    EXPECT_FALSE(MakeSet(1)->IsEqual(MakeSet(1, {MakeKey(0, "a")})));
    EXPECT_FALSE(MakeSet(1, {MakeKey(0, "a")})->IsEqual(MakeSet(1)));
    EXPECT_FALSE(MakeSet(1, {MakeKey(0, "a")})->IsEqual(MakeSet(1, {MakeKey(1, "a")})));
    EXPECT_FALSE(MakeSet(1, {MakeKey(0, "a")})->IsEqual(MakeSet(1, {MakeKey(0, "b")})));
    EXPECT_FALSE(MakeSet(1, {MakeKey(0, "a"), MakeKey(1, "b")})
                     ->IsEqual(MakeSet(1, {MakeKey(0, "a"), MakeKey(1, "c")})));
}

TEST(KeySet, EqualityLooksAtTheLengthOfTheHintAlone)
{
    EXPECT_TRUE(MakeSet(1)->IsEqual(SetWithHint(L"Xyz\u20ac")));
    EXPECT_FALSE(MakeSet(1)->IsEqual(SetWithHint(L"")));
}

TEST(KeySet, EqualityLeavesIdTimeAndRecordsOut)
{
    const CKeySet other(IdOf(2), 1, L"hint", 5, {}, {MakeRecord(1, "r")}, {1, 2});
    EXPECT_TRUE(MakeSet(1)->IsEqual(other.Clone()));
}

TEST(KeySet, EqualityComparesWithTheFirstKeyOfEachType)
{
    const auto with = [](const char* first, const char* second) {
        return MakeSet(1, {MakeKey(0, first), MakeKey(0, second)});
    };
    EXPECT_FALSE(with("a", "b")->IsEqual(with("a", "b")));
    EXPECT_TRUE(with("a", "a")->IsEqual(with("a", "b")));
    const CKeySet::ptr_t key_set = with("a", "b");
    EXPECT_FALSE(key_set->IsEqual(key_set));
}

TEST(KeySet, CloneSharesIdKeysAndRecords)
{
    const CKeySet::ptr_t key_set = GoldenSet();
    const CKeySet::ptr_t clone = key_set->Clone();
    EXPECT_NE(key_set, clone);
    EXPECT_EQ(Stored(*key_set), Stored(*clone));
    EXPECT_EQ(key_set->GetId(), clone->GetId());
    EXPECT_EQ(key_set->GetKeys(), clone->GetKeys());
    EXPECT_EQ(key_set->GetRepairRecords(), clone->GetRepairRecords());
}

TEST(KeySet, CloneHasListsOfItsOwn)
{
    const CKeySet::ptr_t key_set = MakeSet(1);
    const CKeySet::ptr_t clone = key_set->Clone();
    clone->AddKey(MakeKey(0, "a"));
    clone->SetRole(1);
    EXPECT_FALSE(key_set->HasKeys());
    EXPECT_EQ(5u, key_set->GetRole());
}

TEST(KeySet, DeepCloneLeavesTheRepairRecordsOut)
{
    const CKeySet::ptr_t key_set = GoldenSet();
    const CKeySet::ptr_t clone = key_set->CloneDeep();
    EXPECT_FALSE(clone->HasRepairRecords());
    key_set->SetRepairRecords({});
    EXPECT_EQ(Stored(*key_set), Stored(*clone));
}

TEST(KeySet, DeepCloneHasKeysOfItsOwn)
{
    const CKeySet::ptr_t key_set = MakeSet(1, {MakeKey(0, "a"), MakeKey(1, "b")});
    const CKeySet::ptr_t clone = key_set->CloneDeep();
    key_set->WipeKeys();
    EXPECT_EQ("0:a 1:b", KeysOf(*clone));
    EXPECT_EQ(key_set->GetId(), clone->GetId());
}

TEST(KeySet, CloneWithoutSensitiveKeysHasNoKeys)
{
    const CKeySet::ptr_t key_set = GoldenSet();
    const CKeySet::ptr_t clone = key_set->CloneWithoutSensitiveKeys();
    EXPECT_FALSE(clone->HasKeys());
    EXPECT_EQ(key_set->GetRepairRecords(), clone->GetRepairRecords());
    EXPECT_EQ(key_set->GetId(), clone->GetId());
    key_set->SetKeys({});
    EXPECT_EQ(Stored(*key_set), Stored(*clone));
}

TEST(KeySet, StoredFormHasItsIdAtTheEnd) { EXPECT_EQ(Hex(SecretGolden("key_set")), Stored(*GoldenSet())); }

TEST(KeySet, IsReadAsItWasWritten)
{
    const CKeySet::ptr_t key_set = Read(SecretGolden("key_set"));
    EXPECT_EQ("00112233445566778899aabbccddeeff", key_set->GetId()->ToString());
    EXPECT_EQ(1u, key_set->GetAlgorithm());
    EXPECT_EQ(L"Gr\u00f6\u00dfe \u9375", key_set->GetHint());
    EXPECT_EQ(4u, key_set->GetRole());
    EXPECT_EQ("0:\x11 1:\x99", KeysOf(*key_set));
    EXPECT_EQ(kGoldenKey, Text(key_set->GetKeys()[0]->GetData()));
    EXPECT_EQ(kGoldenOtherKey, Text(key_set->GetKeys()[1]->GetData()));
    ASSERT_EQ(1u, key_set->GetRepairRecords().size());
    EXPECT_EQ("0f1e2d3c4b5a69788796a5b4c3d2e1f0",
              key_set->GetRepairRecords()[0]->GetMasterKeySetId()->ToString());
    EXPECT_EQ(0x442e2000u, key_set->GetCreationTime().low);
    EXPECT_EQ(0x00383eabu, key_set->GetCreationTime().high);
    ExpectCopyToBeTheSame("key_set", Copy<CKeySet>());
}

TEST(KeySet, WithoutKeysAndRecordsItsIdFollowsTheTime)
{
    EXPECT_EQ(kEmptySet, Stored(*MakeSet(7)));
    EXPECT_EQ(kEmptySet, Outcome(Unhex(kEmptySet), Copy<CKeySet>()));
}

TEST(KeySet, EmptyHintIsAZeroAndReadAsOne)
{
    const std::string stored = Stored(*SetWithHint(L""));
    EXPECT_EQ("01 00 00 00 01 00 00 00 00 00 00 00 05 00 00 00", stored.substr(0, 47));
    EXPECT_EQ(L"", Read(Unhex(stored))->GetHint());
}

TEST(KeySet, HintMayHoldZeros)
{
    const std::wstring hint(L"a\0\u00f6", 3);
    const std::string stored = Stored(*SetWithHint(hint));
    EXPECT_EQ("01 00 00 00 01 00 00 00 04 00 00 00 61 00 c3 b6", stored.substr(0, 47));
    EXPECT_EQ(hint, Read(Unhex(stored))->GetHint());
}

TEST(KeySet, MissingIdIsWrittenAsTheEmptyOne)
{
    const std::string stored = Stored(CKeySet(nullptr, 1, L"hint", 5, {}, {}, {}));
    EXPECT_EQ(std::string(kEmptySet).substr(0, 36 * 3) + kZeroId, stored);
    EXPECT_TRUE(Read(Unhex(stored))->GetId()->IsEmpty());
}

TEST(KeySet, AnotherVersionIsRefusedBeforeAnythingElseIsRead)
{
    for (const std::uint32_t version : {0u, 2u, 0x01000000u, 0xFFFFFFFFu})
    {
        record_stream_t stream(WithNumber("key_set", 0, version));
        EXPECT_EQ("Unknown keyset version: '" + std::to_string(version) + "'.",
                  Thrown<exc::runtime_exc_t>([&] { CKeySet::DeSerialize(stream); }));
        EXPECT_EQ(SecretGolden("key_set").size() - 4, stream.GetRemaining());
    }
}

TEST(KeySet, MissingBytesFailOrAreReadAsZeros) { ExpectEachCut("key_set", GoldenParts(), Copy<CKeySet>()); }

TEST(KeySet, ShortHintTellsHowMuchOfItCame)
{
    EXPECT_EQ("Failed to retrieve string from the IO device: received less bytes (7) than expected (11).",
              FailureToRead(SecretGolden("key_set").substr(0, 19), CKeySet::DeSerialize));
}

TEST(KeySet, ShortWriteFailsWhereAValueIsWrittenBehindIt)
{
    const CKeySet::ptr_t key_set = GoldenSet();
    ExpectEachShortWrite("key_set", GoldenParts(), [&](io::io_dev_t& stream) { key_set->Serialize(stream); });
}

TEST(KeySet, NegativeCountOfTheHintIsToldAsOne)
{
    stub_dev_t device(SecretGolden("key_set"));
    device.Answer(std::uint64_t(-1), 3);
    EXPECT_EQ("Failed to retrieve string from the IO device: received less bytes (-1) than expected (11).",
              Thrown<exc::runtime_exc_t>([&] { CKeySet::DeSerialize(device); }));
}

TEST(KeySet, FailureOfTheDevicePassesAsItIs)
{
    stub_dev_t device;
    device.Fail("no disk");
    device.Fail("no disk", 1);
    EXPECT_EQ("no disk", Thrown<std::runtime_error>([&] { CKeySet::DeSerialize(device); }));
    EXPECT_EQ("no disk", Thrown<std::runtime_error>([&] { GoldenSet()->Serialize(device); }));
}

TEST(KeySet, LengthOfTheHintIsNotLimitedButByTheMemory)
{
    const block_limit_t limit(16U << 20U);
    for (const std::uint32_t length : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
    {
        record_stream_t stream(WithNumber("key_set", 2, length));
        EXPECT_EQ("std::bad_alloc", Thrown<std::bad_alloc>([&] { CKeySet::DeSerialize(stream); }));
    }
}

TEST(KeySet, HintThatIsNoUtf8IsRefusedBeforeTheRoleIsRead)
{
    wiped_bytes_t bytes = SecretGolden("key_set");
    bytes[12] = '\xff';
    record_stream_t stream(bytes);
    EXPECT_EQ("Multibyte UTF8 string cannot be converted to unicode string. Source string: [" +
                  std::string(bytes.data() + 12, 11) + "].",
              Thrown<exc::runtime_exc_t>([&] { CKeySet::DeSerialize(stream); }));
    EXPECT_EQ(bytes.size() - 23, stream.GetRemaining());
}

TEST(KeySet, HintWithoutAnUtf8FormIsNotWritten)
{
    record_stream_t stream;
    const CKeySet::ptr_t key_set = SetWithHint(std::wstring(1, wchar_t(0xd800)));
    EXPECT_EQ("Unicode string cannot be converted to multibyte UTF8 string.",
              Thrown<exc::runtime_exc_t>([&] { key_set->Serialize(stream); }));
    EXPECT_EQ("01 00 00 00 01 00 00 00", Hex(stream.bytes()));
}

TEST(KeySet, FalseCountsFailAtTheEndOfTheBytes)
{
    const std::string empty = Unhex(kEmptySet);
    const auto with_count = [&](std::size_t place, std::uint32_t count)
    {
        std::string bytes = empty.substr(0, 36);
        bytes.replace(place, 4, reinterpret_cast<const char*>(&count), 4);
        return bytes;
    };
    for (const std::uint32_t count : {1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
    {
        EXPECT_EQ(ShortValue(0, 4) + KeyParts()[0].reading,
                  FailureToRead(with_count(20, count), CKeySet::DeSerialize));
        EXPECT_EQ(ShortValue(0, 4) + RepairRecordParts()[0].reading,
                  FailureToRead(with_count(24, count), CKeySet::DeSerialize));
    }
}

TEST(KeySet, BrokenFormIsReadOrRefused)
{
    ExpectEachBitFlipToBeReadOrRefused("key_set", Copy<CKeySet>(), {2});
}

TEST(KeySet, ServesManyThreadsAtOnce)
{
    constexpr int kThreads = 4;
    constexpr int kKeys = 50;
    const CKeySet::ptr_t key_set = MakeSet(1);
    const auto work = [&key_set]
    {
        for (int i = 0; i != kKeys; ++i)
        {
            key_set->AddKey(MakeKey(0, "a"));
            key_set->AddRepairRecord(IdOf(1), SharedSecure(kSecret<'r'>));
            key_set->SetRole(key_set->GetRole() + 1);
            EXPECT_TRUE(key_set->Clone()->HasKeys());
            EXPECT_FALSE(key_set->ToString().empty());
            EXPECT_FALSE(Stored(*key_set).empty());
            EXPECT_NE(nullptr, key_set->FindKey(0));
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i != kThreads; ++i)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(std::size_t{kThreads * kKeys}, key_set->GetKeys().size());
    EXPECT_EQ(std::size_t{kThreads * kKeys}, key_set->GetRepairRecords().size());
}
