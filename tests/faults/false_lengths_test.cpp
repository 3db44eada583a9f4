// Lengths and counts that are false by up to 4 GiB, in a process that may take 1 GiB: what was asked for ends
// with an exception that says why, or with what came, and nothing that was there is lost.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <exception>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "nelvo/core/cnt/buf_reader.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/crypto/key_set_collection.h"
#include "nelvo/fs/acl_data.h"
#include "nelvo/fs/file_info.h"
#include "nelvo/io/binary_value.h"
#include "tests/support/flat_buffer.h"
#include "tests/support/golden.h"
#include "tests/support/record_stream.h"
#include "tests/support/resource_limit.h"

namespace
{

constexpr std::uint32_t kLongest = 0xFFFFFFFF;
constexpr std::uint32_t kHalf = 0x80000000;
constexpr std::uint32_t kMostSigned = 0x7FFFFFFF;
constexpr std::uint32_t kThatThereIsMemoryFor = 0x20000000;

class FalseLengths : public testing::Test
{
protected:
    // "read", or the whole text of the failure.
    static std::string Outcome(const std::function<void()>& read)
    {
        try
        {
            read();
            return "read";
        }
        catch (const std::exception& e)
        {
            return e.what();
        }
    }

    // What comes of the record of tests/data with another number in that place, whole or cut off behind
    // another.
    template <class Read>
    static std::string Outcome(const std::string& golden, std::size_t part, std::uint32_t number, Read read,
                               std::size_t parts = SIZE_MAX)
    {
        std::vector<std::string> fields = GoldenFields(golden);
        std::memcpy(fields.at(part).data(), &number, sizeof(number));
        std::string bytes;
        for (std::size_t i = 0; i != std::min(parts, fields.size()); ++i)
            bytes += fields[i];
        record_stream_t stream(bytes);
        return Outcome([&] { read(stream); });
    }

private:
    const resource_limit_t m_limit{RLIMIT_AS, rlim_t{1} << 30U};
};

std::string Number(std::uint32_t number) { return {reinterpret_cast<const char*>(&number), sizeof(number)}; }

const char kNoMemory[] = "std::bad_alloc";

template <class Record>
void Read(io::io_dev_t& stream)
{
    Record::DeSerialize(stream);
}

std::string ShortString(std::uint64_t received, std::uint64_t expected)
{
    return "Failed to retrieve string from the IO device: received less bytes (" + std::to_string(received) +
           ") than expected (" + std::to_string(expected) + ").";
}

const char kNoValue[] =
    "Failed to retrieve value from the binary stream: received less bytes (0) than expected (4).";

} // namespace

TEST_F(FalseLengths, OfTextsAndArraysInStreamsAreTold)
{
    const std::vector<std::function<void(io::io_dev_t&)>> reads = {
        [](io::io_dev_t& stream) { io::ReadString(stream); },
        [](io::io_dev_t& stream) { io::ReadArray<cnt::plain_array_t>(stream); },
        [](io::io_dev_t& stream) { io::ReadArray<cnt::secure_array_t>(stream); },
    };
    for (const auto& read : reads)
    {
        for (const std::uint32_t length : {kLongest, kLongest - 1, kHalf, kMostSigned})
        {
            record_stream_t stream(Number(length) + "ab");
            EXPECT_EQ(kNoMemory, Outcome([&] { read(stream); })) << length;
        }
        record_stream_t stream(Number(kThatThereIsMemoryFor) + "ab");
        EXPECT_EQ(ShortString(2, kThatThereIsMemoryFor), Outcome([&] { read(stream); }));
    }
}

TEST_F(FalseLengths, OfTheTextsOfAclDataLeaveThoseThatAreThere)
{
    const std::string context = "\nFailed to unserialize ACL data into stream.";
    util::AclData acl;
    acl.access_acl = "before";
    const auto read = [&](io::io_dev_t& stream) { util::DeserializeAcl(acl, stream); };
    for (const unsigned part : {2U, 5U})
        for (const std::uint32_t length : {kLongest, kHalf})
            EXPECT_EQ(kNoMemory + context, Outcome("acl_data", part, length, read)) << part;
    EXPECT_EQ(ShortString(20, kThatThereIsMemoryFor) + context,
              Outcome("acl_data", 2, kThatThereIsMemoryFor, read));
    EXPECT_EQ("before", acl.access_acl);
}

TEST_F(FalseLengths, OfWhatFileInfoHoldsLeaveNameAndExtraData)
{
    util::FileInfo info;
    info.name = "before";
    info.extra_data = cnt::plain_array_t("before", 6);
    const auto read = [&](io::io_dev_t& stream) { util::DeserializeFileInfo(info, stream); };
    const std::string context = "\nFailed to deserialize file info.";
    const std::string in_acl =
        "\nFailed to unserialize ACL data into stream.\nFailed to deserialize file metadata." + context;
    EXPECT_EQ(kNoMemory + context, Outcome("file_info", 5, kLongest, read));
    EXPECT_EQ(kNoMemory + in_acl, Outcome("file_info", 25, kLongest, read));
    EXPECT_EQ(kNoMemory + in_acl, Outcome("file_info", 28, kLongest, read));
    EXPECT_EQ(kNoMemory + context, Outcome("file_info", 30, kLongest, read));
    EXPECT_EQ(ShortString(3, kThatThereIsMemoryFor) + context,
              Outcome("file_info", 30, kThatThereIsMemoryFor, read));
    EXPECT_EQ("before", info.name);
    EXPECT_EQ("before", BytesOf(info.extra_data));
}

TEST_F(FalseLengths, OfKeysAndRepairRecordsAreToldOrReadWithZeros)
{
    const std::string in_key = "\n--tr:Failed to de-serialize encryption key from memory stream.";
    const std::string in_record = "\n--tr:Failed to de-serialize keyset repair record from memory stream.";
    EXPECT_EQ(kNoMemory + in_key, Outcome("crypto_key", 1, kLongest, Read<crypto::CKey>));
    EXPECT_EQ("read", Outcome("crypto_key", 1, kThatThereIsMemoryFor, Read<crypto::CKey>));
    EXPECT_EQ("The size of the serialized keyset id is unexpected (4294967295)." + in_record,
              Outcome("repair_record", 0, kLongest, Read<crypto::CRestoreKeyRepairRec>));
    EXPECT_EQ(kNoMemory + in_record,
              Outcome("repair_record", 2, kLongest, Read<crypto::CRestoreKeyRepairRec>));
    EXPECT_EQ("Serialized size of the SRawKeySetId is unexpected (4294967295). Expected size: '16'."
              "\n--tr:Failed to deserialize keyset.",
              Outcome("key_set_id", 0, kLongest, Read<crypto::CKeySetId>));
}

TEST_F(FalseLengths, OfWhatKeySetsHoldAreTold)
{
    const std::string in_key = "\n--tr:Failed to de-serialize encryption key from memory stream.";
    const std::string in_record = "\n--tr:Failed to de-serialize keyset repair record from memory stream.";
    EXPECT_EQ(kNoMemory, Outcome("key_set", 2, kLongest, Read<crypto::CKeySet>));
    EXPECT_EQ(kNoMemory + in_key, Outcome("key_set", 10, kLongest, Read<crypto::CKeySet>));
    EXPECT_EQ(kNoMemory + in_record, Outcome("key_set", 17, kLongest, Read<crypto::CKeySet>));
}

// A count that took memory for so many ahead would end for want of it.
TEST_F(FalseLengths, AsCountsTakeNoMemoryAhead)
{
    const std::string in_key = "\n--tr:Failed to de-serialize encryption key from memory stream.";
    const std::string in_record = "\n--tr:Failed to de-serialize keyset repair record from memory stream.";
    // Behind the keys and behind the repair records, and behind the sets.
    EXPECT_EQ(kNoValue + in_key, Outcome("key_set", 5, kLongest, Read<crypto::CKeySet>, 15));
    EXPECT_EQ(kNoValue + in_record, Outcome("key_set", 6, kLongest, Read<crypto::CKeySet>, 19));
    EXPECT_EQ(kNoValue, Outcome("key_set_collection", 0, kLongest, Read<crypto::CKeySetCollection>));
}

TEST_F(FalseLengths, OfTheBufferFormOfExceptionsAreToldAndLeaveTheException)
{
    exc::runtime_exc_t exception("before");
    const auto outcome = [&](const std::string& bytes)
    {
        const std::string failure = Outcome(
            [&]
            {
                CBufReader reader(ArrayOf(bytes));
                exception.ReadFrom(reader);
            });
        EXPECT_STREQ("before", exception.what());
        return failure;
    };
    const std::string in_text = "Failed to extract multi-byte string from buffer .";
    const std::string none = Number(0);
    EXPECT_EQ("Invalid length of the string '4294967295'.\n" + in_text,
              outcome(Number(1) + Number(kLongest)));
    EXPECT_EQ("Invalid length of the string '4294967295'.\n" + in_text,
              outcome(none + Number(1) + Number(kLongest)));
    EXPECT_EQ("Invalid length of the string '4294967295'.\n" + in_text,
              outcome(none + none + Number(1) + Number(1) + Number(kLongest)));
    EXPECT_EQ(OutOfBuffer(8, 524288000, 8) + "\n" + in_text, outcome(Number(1) + Number(524288000)));

    EXPECT_EQ(OutOfBuffer(4, 4, 4) + "\n" + in_text, outcome(Number(kMostSigned)));
    EXPECT_EQ(OutOfBuffer(8, 4, 8) + "\n" + in_text, outcome(none + Number(kMostSigned)));
    EXPECT_EQ(OutOfBuffer(12, 4, 12) + "\nFailed to extract integer value from buffer.",
              outcome(none + none + Number(kMostSigned)));
}

TEST_F(FalseLengths, OfBlobsInBuffersAreToldAndLeaveTheArray)
{
    cnt::plain_array_t plain("before", 6);
    cnt::secure_array_t secure("before", 6);
    const std::string context = "\nFailed to extract binary content from buffer.";
    for (const auto& [length, failure] :
         {std::pair<std::uint32_t, std::string>(kLongest, "Invalid length of the binary data '4294967295'."),
          std::pair<std::uint32_t, std::string>(524288000, OutOfBuffer(6, 524288000, 4))})
    {
        const auto array = ArrayOf(Number(length) + "ab");
        EXPECT_EQ(failure + context, Outcome([&] { CBufReader(array).ReadBlob(plain); }));
        EXPECT_EQ(failure + context, Outcome([&] { CBufReader(array).ReadBlob(secure); }));
    }
    EXPECT_EQ("before", BytesOf(plain));
    EXPECT_EQ("before", BytesOf(secure));
}
