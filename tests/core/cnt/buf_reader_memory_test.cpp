#include <cstdint>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "nelvo/core/cnt/buf_reader.h"
#include "nelvo/core/exc/exc_base.h"
#include "tests/core/cnt/little_memory.h"
#include "tests/support/failure_text.h"
#include "tests/support/flat_buffer.h"
#include "tests/support/golden.h"

namespace
{

// What reading these bytes says where memory is scarce.
template <class Read>
std::string Failure(const char* bytes, Read read)
{
    CBufReader reader(ArrayOf(Unhex(bytes)));
    const little_memory_t little_memory;
    return FailureText([&] { read(reader); });
}

constexpr const char* kFalseLength = "00 00 40 1f 61";
constexpr const char* kOutOfBuffer =
    "Out of the buffer, buffer size '5', struct size '524288000', buffer pointer '4'.";

// A blob that the array has and that there is no second room for.
template <class Array>
void ExpectNoRoomForBlob()
{
    constexpr std::uint32_t kLength = 0x09000000; // 144 MiB, of 256
    const auto array = boost::make_shared<cnt::plain_array_t>(sizeof(kLength) + kLength);
    std::memcpy(array->data(), &kLength, sizeof(kLength));
    CBufReader reader(array);
    Array blob("old", 3);
    const little_memory_t little_memory;
    EXPECT_EQ("std::bad_alloc\nFailed to extract binary content from buffer.",
              FailureText([&] { reader.ReadBlob(blob); }));
    EXPECT_EQ("old", BytesOf(blob));
}

} // namespace

TEST(BufReaderMemory, LengthThatIsNotThereTakesNoMemory)
{
    EXPECT_EQ(std::string(kOutOfBuffer) + "\nFailed to extract multi-byte string from buffer .",
              Failure(kFalseLength, [](CBufReader& reader) { reader.ReadString(); }));
    const std::string blob_failure =
        std::string(kOutOfBuffer) + "\nFailed to extract binary content from buffer.";
    cnt::plain_array_t plain;
    EXPECT_EQ(blob_failure, Failure(kFalseLength, [&](CBufReader& reader) { reader.ReadBlob(plain); }));
    cnt::secure_array_t secure;
    EXPECT_EQ(blob_failure, Failure(kFalseLength, [&](CBufReader& reader) { reader.ReadBlob(secure); }));
}

TEST(BufReaderMemory, BlobWithoutRoomForItIsToldWithItsContextAndLeavesTheTarget)
{
    ExpectNoRoomForBlob<cnt::plain_array_t>();
    ExpectNoRoomForBlob<cnt::secure_array_t>();
}

TEST(BufReaderMemory, CountOfAnExceptionThatIsNotThereTakesNoMemory)
{
    const auto read = [](CBufReader& reader) { exc::exc_base_t{reader}; };
    const std::string string_failure = "\nFailed to extract multi-byte string from buffer .";
    EXPECT_EQ("Out of the buffer, buffer size '4', struct size '4', buffer pointer '4'." + string_failure,
              Failure("ff ff ff 7f", read));
    EXPECT_EQ("Out of the buffer, buffer size '8', struct size '4', buffer pointer '8'." + string_failure,
              Failure("00 00 00 00 ff ff ff 7f", read));
    EXPECT_EQ("Out of the buffer, buffer size '12', struct size '4', buffer pointer '12'.\n"
              "Failed to extract integer value from buffer.",
              Failure("00 00 00 00 00 00 00 00 ff ff ff 7f", read));
}
