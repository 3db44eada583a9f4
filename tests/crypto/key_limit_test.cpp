// Sizes of keys as no key has them, in a process that may take 1 GiB.

#include "nelvo/crypto/key.h"

#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/crypto/repair_record.h"
#include "tests/crypto/stored_parts.h"
#include "tests/support/resource_limit.h"

using crypto::CAesKeyIVBlob;
using crypto::CKey;
using crypto::CRestoreKeyRepairRec;

namespace
{

class KeyLimit : public testing::Test
{
protected:
    // Reads with each size: "read", or the failure.
    template <class Read>
    void Expect(const std::string& golden, std::size_t part, const std::string& failure, Read read)
    {
        for (const std::uint32_t size : {1U << 25U, 1U << 26U, 1U << 28U, 1U << 30U, 1U << 31U, 0x7FFFFFFFU,
                                         0x80000001U, 0xFFFFFFFEU, 0xFFFFFFFFU})
            EXPECT_EQ(size < 1U << 30U ? "read" : "std::bad_alloc\n--tr:" + failure,
                      Outcome(WithNumber(golden, part, size), read))
                << golden << ' ' << size;
    }

private:
    template <class Read>
    static std::string Outcome(std::string_view bytes, Read read)
    {
        try
        {
            read(bytes);
            return "read";
        }
        catch (const exc::runtime_exc_t& e)
        {
            return e.what();
        }
    }

    const resource_limit_t m_limit{RLIMIT_AS, rlim_t{1} << 30U};
};

template <class Record>
void Read(std::string_view bytes)
{
    record_stream_t stream(bytes);
    Record::DeSerialize(stream);
}

} // namespace

TEST_F(KeyLimit, KeyAboveItIsRefused)
{
    Expect("crypto_key", 1, "Failed to de-serialize encryption key from memory stream.", Read<CKey>);
}

TEST_F(KeyLimit, RepairDataAboveItIsRefused)
{
    Expect("repair_record", 2, "Failed to de-serialize keyset repair record from memory stream.",
           Read<CRestoreKeyRepairRec>);
}

TEST_F(KeyLimit, BlobAboveItIsRefused)
{
    for (const unsigned part : {3U, 4U})
        Expect("aes_key_iv_blob", part, "Failed to deserialize AES key/IV blob, specified data size: '40'.",
               [](std::string_view bytes) { CAesKeyIVBlob::FromBlob(SharedSecure(bytes)); });
}
