// Makes the limit of lengths small: as the record's friend, it has a SetAgentOption of its own.

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "nelvo/context/agent_options.h"
#include "nelvo/core/cnt/buf_reader.h"
#include "tests/support/failure_text.h"
#include "tests/support/flat_buffer.h"
#include "tests/support/golden.h"

using namespace std::string_literals;

void SetAgentOption(CAgentOptions& record, const std::string&, const std::string& value)
{
    record.m_max_read_length = static_cast<std::uint32_t>(std::stoul(value));
}

namespace
{

class BufReaderLimit : public ::testing::Test
{
protected:
    void SetUp() override { SetLimit("5"); }
    void TearDown() override { SetLimit("524288000"); }

    static void SetLimit(const std::string& limit) { SetAgentOption(GetAgentOptions(), "", limit); }

    static constexpr const char* kFive = "05 00 00 00 61 62 63 64 65";
    static constexpr const char* kSix = "06 00 00 00 61 62 63 64 65 66";
    static constexpr const char* kStringFailure =
        "Invalid length of the string '6'.\nFailed to extract multi-byte string from buffer .";
    static constexpr const char* kBlobFailure =
        "Invalid length of the binary data '6'.\nFailed to extract binary content from buffer.";
};

template <class Array>
void ExpectLimit(const char* within, const char* beyond, const char* failure)
{
    Array blob;
    CBufReader(ArrayOf(Unhex(within))).ReadBlob(blob);
    EXPECT_EQ("abcde", BytesOf(blob));
    EXPECT_EQ(failure, FailureText([&] { CBufReader(ArrayOf(Unhex(beyond))).ReadBlob(blob); }));
    EXPECT_EQ("abcde", BytesOf(blob));
}

} // namespace

TEST_F(BufReaderLimit, StringOfThatLengthIsReadAndALongerOneRefused)
{
    EXPECT_EQ("abcde", CBufReader(ArrayOf(Unhex(kFive))).ReadString());
    EXPECT_EQ(kStringFailure, FailureText([] { CBufReader(ArrayOf(Unhex(kSix))).ReadString(); }));
}

TEST_F(BufReaderLimit, BlobOfThatLengthIsReadAndALongerOneRefused)
{
    ExpectLimit<cnt::plain_array_t>(kFive, kSix, kBlobFailure);
    ExpectLimit<cnt::secure_array_t>(kFive, kSix, kBlobFailure);
}

TEST_F(BufReaderLimit, HoldsForTheCallersMemoryHoweverLarge)
{
    char memory[16] = {};
    EXPECT_EQ(5u, CBufReader(ArrayOf(Unhex(kFive))).ReadBlob(memory, sizeof(memory)));
    EXPECT_EQ("abcde"s, memory);
    EXPECT_EQ(kBlobFailure,
              FailureText([&] { CBufReader(ArrayOf(Unhex(kSix))).ReadBlob(memory, sizeof(memory)); }));
}

TEST_F(BufReaderLimit, IsTakenWhenTheReaderIsBuilt)
{
    CBufReader with_array(ArrayOf(Unhex(kSix)));
    CBufReader without_array;
    SetLimit("6");
    EXPECT_EQ(kStringFailure, FailureText([&] { with_array.ReadString(); }));
    without_array.SetBuffer(ArrayOf(Unhex(kSix)));
    EXPECT_EQ(kStringFailure, FailureText([&] { without_array.ReadString(); }));
    EXPECT_EQ("abcdef", CBufReader(ArrayOf(Unhex(kSix))).ReadString());
}
