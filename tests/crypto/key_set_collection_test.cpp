#include "nelvo/crypto/key_set_collection.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/crypto/key_set_vocabulary.h"
#include "tests/support/golden.h"
#include "tests/support/stub_dev.h"
#include "tests/support/thrown.h"

using crypto::CKeySet;
using crypto::CKeySetCollection;

namespace
{

CKeySetCollection Of(const CKeySetCollection::key_sets_t& key_sets)
{
    CKeySetCollection collection;
    for (const CKeySet::ptr_t& key_set : key_sets)
        collection.Add(key_set);
    return collection;
}

std::string StoredForm(const CKeySetCollection& collection)
{
    return WrittenHex([&](io::io_dev_t& stream) { collection.Serialize(stream); });
}

CKeySetCollection GoldenCollection()
{
    record_stream_t stream(SecretGolden("key_set_collection"));
    return *CKeySetCollection::DeSerialize(stream);
}

stored_parts_t GoldenParts()
{
    const stored_parts_t numbers(5, PlainPart());
    const stored_parts_t no_hint = {PlainPart(), PlainPart(), PlainPart()};
    const stored_parts_t hint = {PlainPart(), PlainPart(), PlainPart(), {part_kind_t::kText, "", ""}};
    return Joined(
        {{PlainPart()}, no_hint, numbers, KeySetIdParts(), hint, numbers, KeyParts(), KeySetIdParts()});
}

boost::shared_ptr<cnt::plain_array_t> Plain(const std::string& bytes)
{
    return boost::make_shared<cnt::plain_array_t>(bytes.data(), bytes.size());
}

} // namespace

TEST(KeySetCollection, IsAListWithoutALockOrVirtualOperations)
{
    EXPECT_EQ(sizeof(CKeySetCollection::key_sets_t), sizeof(CKeySetCollection));
}

TEST(KeySetCollection, NewOneHasNoSets) { EXPECT_EQ(0u, CKeySetCollection().GetCount()); }

TEST(KeySetCollection, KeepsSetsOfTheSameIdAndFindsTheFirst)
{
    const CKeySet::ptr_t first = MakeSet(1);
    const CKeySetCollection collection = Of({MakeSet(2), first, MakeSet(1)});
    EXPECT_EQ(3u, collection.GetCount());
    EXPECT_EQ(first, collection.FindById(*IdOf(1)));
    EXPECT_EQ(first, collection.GetById(*IdOf(1)));
}

TEST(KeySetCollection, FindsNothingWithoutASetOfTheId)
{
    EXPECT_EQ(nullptr, Of({MakeSet(1)}).FindById(*IdOf(2)));
    EXPECT_EQ("Keyset '02000000000000000000000000000000' not found.",
              Thrown<exc::runtime_exc_t>([] { Of({MakeSet(1)}).GetById(*IdOf(2)); }));
}

TEST(KeySetCollection, SetWithoutAnIdHasTheEmptyOne)
{
    const auto nameless = boost::make_shared<CKeySet>(nullptr, 1, L"", 5, CKeySet::keys_t(),
                                                      CKeySet::repair_records_t(), crypto::SKeySetTime());
    EXPECT_EQ(nameless, Of({nameless}).FindById(crypto::CKeySetId()));
}

TEST(KeySetCollection, AddsTheSetsOfAnotherAndSharesThem)
{
    const CKeySet::ptr_t key_set = MakeSet(2);
    CKeySetCollection collection = Of({MakeSet(1)});
    collection.AddAll(Of({key_set, MakeSet(3)}));
    EXPECT_EQ(3u, collection.GetCount());
    EXPECT_EQ(key_set, collection.FindById(*IdOf(2)));
}

TEST(KeySetCollection, AddsTheSetsOfAnotherBehindItsOwnInTheirOrder)
{
    CKeySetCollection collection = Of({SetWithRole(1, 1), SetWithRole(2, 2)});
    collection.AddAll(Of({SetWithRole(2, 3), SetWithRole(1, 4)}));
    EXPECT_EQ(StoredForm(Of({SetWithRole(1, 1), SetWithRole(2, 2), SetWithRole(2, 3), SetWithRole(1, 4)})),
              StoredForm(collection));
}

TEST(KeySetCollection, AddsItsOwnSetsOnceMore)
{
    CKeySetCollection collection = Of({MakeSet(1), MakeSet(2)});
    collection.AddAll(collection);
    EXPECT_EQ(4u, collection.GetCount());
}

TEST(KeySetCollection, CollectsClonesBehindWhatIsThere)
{
    const CKeySet::ptr_t match = SetWithAlgorithm(1, 0);
    const CKeySetCollection collection = Of({match, SetWithAlgorithm(2, 1), SetWithAlgorithm(3, 0)});
    CKeySetCollection::key_sets_t found = {MakeSet(9)};
    collection.CollectByAlgorithm(0, found);
    ASSERT_EQ(3u, found.size());
    EXPECT_NE(match, found[1]);
    EXPECT_EQ(match->GetId(), found[1]->GetId());
    EXPECT_EQ(*IdOf(3), *found[2]->GetId());
}

TEST(KeySetCollection, CollectsByRoleInTheSameWay)
{
    const CKeySet::ptr_t match = SetWithRole(1, 4);
    const CKeySetCollection collection = Of({SetWithRole(2, 5), match});
    CKeySetCollection::key_sets_t found = {MakeSet(9)};
    collection.CollectByRole(4, found);
    ASSERT_EQ(2u, found.size());
    EXPECT_NE(match, found[1]);
    EXPECT_EQ(match->GetId(), found[1]->GetId());
    collection.CollectByRole(0, found);
    EXPECT_EQ(2u, found.size());
}

TEST(KeySetCollection, SubsetIsACollectionOfClones)
{
    const CKeySet::ptr_t aes = SetWithAlgorithm(1, 0);
    const CKeySet::ptr_t archive = SetWithRole(2, 6);
    const CKeySetCollection collection = Of({aes, archive});
    const auto by_algorithm = collection.SubsetByAlgorithm(0);
    const auto by_role = collection.SubsetByRole(6);
    EXPECT_EQ(1u, by_algorithm->GetCount());
    EXPECT_EQ(1u, by_role->GetCount());
    EXPECT_EQ(aes->GetId(), by_algorithm->GetById(*IdOf(1))->GetId());
    EXPECT_NE(aes, by_algorithm->GetById(*IdOf(1)));
    EXPECT_EQ(archive->GetId(), by_role->GetById(*IdOf(2))->GetId());
    EXPECT_NE(archive, by_role->GetById(*IdOf(2)));
    EXPECT_EQ(0u, collection.SubsetByAlgorithm(7)->GetCount());
    EXPECT_EQ(0u, collection.SubsetByRole(1)->GetCount());
}

TEST(KeySetCollection, CloneIsOfClonesThatShareTheirKeys)
{
    const CKeySet::ptr_t key_set = MakeSet(1, {MakeKey(0, "a")});
    const auto clone = Of({key_set, MakeSet(2)}).Clone();
    EXPECT_EQ(2u, clone->GetCount());
    EXPECT_NE(key_set, clone->GetById(*IdOf(1)));
    EXPECT_EQ(key_set->GetKeys(), clone->GetById(*IdOf(1))->GetKeys());
}

TEST(KeySetCollection, StoredFormIsTheCountAndTheSets)
{
    const CKeySet empty(nullptr, 0, L"", 0, {}, {}, {});
    const CKeySet::ptr_t last =
        GoldenCollection().FindById(*GoldenSet()->GetRepairRecords()[0]->GetMasterKeySetId());
    ASSERT_NE(nullptr, last);
    EXPECT_EQ("2:\xd1", KeysOf(*last));
    EXPECT_EQ(L"Me", last->GetHint());
    EXPECT_EQ(5u, last->GetRole());
    EXPECT_EQ(Hex(SecretGolden("key_set_collection")), StoredForm(Of({empty.Clone(), last})));
}

TEST(KeySetCollection, IsReadAsItWasWritten)
{
    EXPECT_EQ(2u, GoldenCollection().GetCount());
    ExpectCopyToBeTheSame("key_set_collection", Copy<CKeySetCollection>());
}

TEST(KeySetCollection, EmptyOneIsFourZeros)
{
    EXPECT_EQ("00 00 00 00", StoredForm({}));
    record_stream_t stream(std::string(4, '\0'));
    EXPECT_EQ(0u, CKeySetCollection::DeSerialize(stream)->GetCount());
}

TEST(KeySetCollection, MissingBytesFailOrAreReadAsZeros)
{
    ExpectEachCut("key_set_collection", GoldenParts(), Copy<CKeySetCollection>());
}

TEST(KeySetCollection, ShortWriteFailsWhereAValueIsWrittenBehindIt)
{
    const CKeySetCollection collection = GoldenCollection();
    ExpectEachShortWrite("key_set_collection", GoldenParts(),
                         [&](io::io_dev_t& stream) { collection.Serialize(stream); });
}

TEST(KeySetCollection, FalseCountFailsAtTheEndOfTheBytes)
{
    for (const std::uint32_t count : {3u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ(ShortValue(0, 4),
                  FailureToRead(WithNumber("key_set_collection", 0, count), CKeySetCollection::DeSerialize));
    record_stream_t stream(WithNumber("key_set_collection", 0, 1));
    EXPECT_EQ(1u, CKeySetCollection::DeSerialize(stream)->GetCount());
}

TEST(KeySetCollection, FailureOfTheDevicePassesAsItIs)
{
    stub_dev_t device;
    device.Fail("no disk");
    device.Fail("no disk", 1);
    EXPECT_EQ("no disk", Thrown<std::runtime_error>([&] { CKeySetCollection::DeSerialize(device); }));
    EXPECT_EQ("no disk", Thrown<std::runtime_error>([&] { CKeySetCollection().Serialize(device); }));
}

TEST(KeySetCollection, FailureOfASetHasNoContext)
{
    EXPECT_EQ("Unknown keyset version: '2'.",
              FailureToRead(WithNumber("key_set_collection", 1, 2), CKeySetCollection::DeSerialize));
}

TEST(KeySetCollection, GoesToAndFromArraysOfBothKinds)
{
    const auto plain = boost::make_shared<cnt::plain_array_t>(SecretGolden("key_set_collection").size());
    const auto secure = boost::make_shared<cnt::secure_array_t>();
    const CKeySetCollection collection = GoldenCollection();
    collection.SerializeToArray(plain);
    collection.SerializeToArray(secure);
    EXPECT_EQ(Hex(SecretGolden("key_set_collection")), Hex({plain->data(), plain->size()}));
    EXPECT_EQ(Hex(SecretGolden("key_set_collection")), Hex(Text(*secure)));
    EXPECT_EQ(StoredForm(collection), StoredForm(*CKeySetCollection::DeSerializeFromArray(plain)));
    EXPECT_EQ(StoredForm(collection), StoredForm(*CKeySetCollection::DeSerializeFromArray(secure)));
    plain->assign(std::string(plain->size(), '\0').data(), plain->size()); // nobody else wipes that one
}

TEST(KeySetCollection, SerializeToArrayLeavesWhatStandsBehind)
{
    const auto array = Plain("123456");
    CKeySetCollection().SerializeToArray(array);
    EXPECT_EQ("00 00 00 00 35 36", Hex({array->data(), array->size()}));
    EXPECT_EQ(0u, CKeySetCollection::DeSerializeFromArray(array)->GetCount());
}

TEST(KeySetCollection, ArrayThatEndsTooEarlyFails)
{
    EXPECT_EQ(ShortValue(3, 4),
              Thrown<exc::runtime_exc_t>([] { CKeySetCollection::DeSerializeFromArray(Plain("123")); }));
}

TEST(KeySetCollection, BrokenFormIsReadOrRefused)
{
    ExpectEachBitFlipToBeReadOrRefused("key_set_collection", Copy<CKeySetCollection>(), {3, 13});
}
