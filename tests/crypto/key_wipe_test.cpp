// Looks at all memory when it goes back to the heap: this program is linked with a free of its own, and its
// operator delete ends there too.

#include <cstring> // explicit_bzero
#include <functional>
#include <malloc.h>
#include <new>
#include <stdexcept>
#include <string>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/crypto/key_set_collection.h"
#include "nelvo/io/mem_stream.h"
#include "tests/support/failing_memory.h"
#include "tests/support/made_secret.h"
#include "tests/support/unwritten_memory.h"

using namespace crypto;

namespace
{

constexpr std::size_t kSecretSize = 1190;

std::size_t g_secrets = 0;

// How many secrets stand in the blocks that go back to the heap meanwhile.
std::size_t SecretsLeftBy(const std::function<void()>& call)
{
    g_secrets = 0;
    call();
    return g_secrets;
}

secure_array_ptr_t Secret()
{
    auto secret = boost::make_shared<secure_array_t>(kSecretSize);
    MakeSecret(secret->data(), secret->size());
    return secret;
}

boost::shared_ptr<CKey> SecretKey() { return boost::make_shared<CKey>(enPrivateKey, *Secret()); }

CKeySet::ptr_t SecretSet()
{
    const CKeySet::repair_records_t records = {boost::make_shared<CRestoreKeyRepairRec>(nullptr, Secret())};
    return boost::make_shared<CKeySet>(boost::make_shared<CKeySetId>(), 1, L"hint", 1,
                                       CKeySet::keys_t{SecretKey(), SecretKey()}, records, SKeySetTime());
}

// Where records stand to be read, and what happens behind one of the reads.
class stored_secrets_t : public io::io_dev_t
{
public:
    template <class Record>
    stored_secrets_t(const Record& record, int calls_before, std::function<void()> event)
        : m_calls_left(calls_before), m_event(std::move(event))
    {
        record.Serialize(m_stream);
        m_stream.GetMemDevice()->SeekAbsolute(0);
    }

    std::uint64_t write(const void*, std::uint64_t) override { return 0; }
    std::uint64_t read(void* buffer, std::uint64_t count) override
    {
        const std::uint64_t received = m_stream.read(buffer, count);
        if (m_calls_left-- == 0)
            m_event();
        return received;
    }

private:
    io::secure_mem_stream_t m_stream;
    int m_calls_left;
    std::function<void()> m_event;
};

void Break() { throw std::runtime_error("no line"); }

void RunOut() { FailNextAllocation(); }

// Reads the record once for each of its reads, with that event behind the read. Returns how often it failed.
template <class Record>
int FailuresOf(const Record& record, const std::function<void()>& event, int reads)
{
    int failures = 0;
    for (int calls_before = 0; calls_before != reads; ++calls_before)
    {
        stored_secrets_t device(record, calls_before, event);
        try
        {
            Record::DeSerialize(device);
        }
        catch (const std::exception&)
        {
            ++failures;
        }
        HasAllocationFailed();
    }
    return failures;
}

template <class Record>
void CopyThroughASecureStream(const Record& record)
{
    io::secure_mem_stream_t stream;
    record.Serialize(stream);
    record.Serialize(stream);
    stream.GetMemDevice()->SeekAbsolute(0);
    Record::DeSerialize(stream);
    Record::DeSerialize(stream);
    EXPECT_EQ(0u, stream.GetRemaining());
}

} // namespace

// The linker puts what wraps in the place of the calls of this function.
extern "C" void FreeTheBlock(void* block) __asm__("__real_free");
extern "C" void LookAndFree(void* block) __asm__("__wrap_free");

void LookAndFree(void* block)
{
    if (block != nullptr)
    {
        const std::size_t size = ::malloc_usable_size(block);
        TakeAsWritten(block, size);
        g_secrets += CountSecrets(static_cast<const char*>(block), size);
        ::explicit_bzero(block, size); // what is found is not found again in the next block there
    }
    FreeTheBlock(block);
}

TEST(KeyWipe, PlainCopyOfAKeyWouldBeFound)
{
    EXPECT_LT(0u, SecretsLeftBy([] { std::string(Secret()->data(), kSecretSize); }));
    EXPECT_LT(0u, SecretsLeftBy([] { cnt::plain_array_t(Secret()->data(), kSecretSize); }));
}

TEST(KeyWipe, KeysThatGoLeaveNothing)
{
    EXPECT_EQ(0u, SecretsLeftBy([] { SecretKey(); }));
    EXPECT_EQ(0u, SecretsLeftBy([] { SecretKey()->Clone()->CopyData(); }));
}

TEST(KeyWipe, WipedKeyHoldsNothingWhileItLives)
{
    const auto key = SecretKey();
    const char* const bytes = key->GetData().data();
    ASSERT_LT(0u, CountSecrets(bytes, kSecretSize));
    key->Wipe();
    EXPECT_EQ(0u, CountSecrets(bytes, kSecretSize));
}

TEST(KeyWipe, SharedKeysOfASetAreWipedForAll)
{
    const CKeySet::ptr_t key_set = SecretSet();
    const CKeySet::ptr_t clone = key_set->Clone();
    const char* const bytes = key_set->GetKeys()[1]->GetData().data();
    clone->WipeKeys();
    EXPECT_EQ(0u, CountSecrets(bytes, kSecretSize));
}

TEST(KeyWipe, BytesThatGrowLeaveNothingWhereTheyStood)
{
    EXPECT_EQ(0u, SecretsLeftBy([] { SecretKey()->GetData().resize(100000); }));
    EXPECT_EQ(0u, SecretsLeftBy([] { SecretKey()->GetData().append("more", 4); }));
}

TEST(KeyWipe, RecordsThatAreWrittenAndReadLeaveNothing)
{
    const CRestoreKeyRepairRec record(nullptr, Secret());
    EXPECT_EQ(0u, SecretsLeftBy([] { CopyThroughASecureStream(*SecretKey()); }));
    EXPECT_EQ(0u, SecretsLeftBy([&] { CopyThroughASecureStream(record); }));
    EXPECT_EQ(0u, SecretsLeftBy([] { CopyThroughASecureStream(*SecretSet()); }));
}

TEST(KeyWipe, CollectionInASecureArrayLeavesNothing)
{
    const auto copy = []
    {
        CKeySetCollection collection;
        collection.Add(SecretSet());
        collection.Add(SecretSet()->CloneDeep());
        const auto array = boost::make_shared<cnt::secure_array_t>();
        collection.SerializeToArray(array);
        EXPECT_EQ(2u, CKeySetCollection::DeSerializeFromArray(array)->GetCount());
    };
    EXPECT_EQ(0u, SecretsLeftBy(copy));
}

TEST(KeyWipe, BlobsLeaveNothing)
{
    const auto copy = []
    {
        const secure_array_t form = CAesKeyIVBlob(Secret(), Secret()).ToBlob();
        const auto blob = CKey(enAESIVKey, form).ToAesKeyIVBlob();
        EXPECT_EQ(form, blob->ToBlob());
    };
    EXPECT_EQ(0u, SecretsLeftBy(copy));
}

TEST(KeyWipe, BlobOfAFalseSizeLeavesNothing)
{
    const auto read = []
    {
        const auto form = boost::make_shared<secure_array_t>(CAesKeyIVBlob(Secret(), Secret()).ToBlob());
        (*form)[18] = 1; // a few bytes more for the key, and so less for the vector
        CAesKeyIVBlob::FromBlob(form);
    };
    EXPECT_EQ(0u, SecretsLeftBy(read));
}

TEST(KeyWipe, ReadThatBreaksLeavesNothing)
{
    const CRestoreKeyRepairRec record(nullptr, Secret());
    EXPECT_EQ(0u, SecretsLeftBy([] { EXPECT_EQ(3, FailuresOf(*SecretKey(), Break, 3)); }));
    EXPECT_EQ(0u, SecretsLeftBy([&] { EXPECT_EQ(4, FailuresOf(record, Break, 4)); }));
    EXPECT_EQ(0u, SecretsLeftBy([] { EXPECT_EQ(21, FailuresOf(*SecretSet(), Break, 21)); }));
}

TEST(KeyWipe, ReadThatRunsOutOfMemoryLeavesNothing)
{
    const CRestoreKeyRepairRec record(nullptr, Secret());
    EXPECT_EQ(0u, SecretsLeftBy([] { EXPECT_LT(0, FailuresOf(*SecretKey(), RunOut, 3)); }));
    EXPECT_EQ(0u, SecretsLeftBy([&] { EXPECT_LT(0, FailuresOf(record, RunOut, 4)); }));
    EXPECT_EQ(0u, SecretsLeftBy([] { EXPECT_LT(0, FailuresOf(*SecretSet(), RunOut, 21)); }));
}

TEST(KeyWipe, CopyThatRunsOutOfMemoryLeavesNothing)
{
    const auto key = SecretKey();
    const auto clone = [&]
    {
        FailNextAllocation();
        EXPECT_THROW(key->Clone(), std::bad_alloc);
    };
    EXPECT_EQ(0u, SecretsLeftBy(clone));
}
