#include "nelvo/core/guid.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/failing_memory.h"
#include "tests/support/failure_text.h"

namespace
{

const char kText[] = "{00112233-4455-6677-8899-aabbccddeeff}";
const char kBare[] = "00112233-4455-6677-8899-aabbccddeeff";
const std::uint8_t kBytes[] = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,
                               0x88, 0x99, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff};

Guid Value() { return Guid::FromBytes(kBytes, sizeof(kBytes)); }

Guid ValueWith(std::size_t index, std::uint8_t byte)
{
    std::uint8_t bytes[sizeof(kBytes)];
    std::copy(std::begin(kBytes), std::end(kBytes), bytes);
    bytes[index] = byte;
    return Guid::FromBytes(bytes, sizeof(bytes));
}

} // namespace

TEST(Guid, IsSixteenBytesAndStartsNull)
{
    EXPECT_EQ(16u, sizeof(Guid));
    EXPECT_TRUE(Guid().IsNull());
    EXPECT_EQ("{00000000-0000-0000-0000-000000000000}", Guid().ToString());
}

TEST(Guid, TextIsBracedLowerCaseInByteOrder) { EXPECT_EQ(kText, Value().ToString()); }

TEST(Guid, TextOfTheNullGuidParsesBackToNull)
{
    EXPECT_TRUE(Guid::Parse("{00000000-0000-0000-0000-000000000000}").IsNull());
}

TEST(Guid, ParseTakesEitherCase)
{
    EXPECT_EQ(kText, Guid::Parse("{00112233-4455-6677-8899-AABBCCDDEEFF}").ToString());
    EXPECT_EQ(kText, Guid::Parse("00112233-4455-6677-8899-aAbBcCdDeEfF").ToString());
}

TEST(Guid, ParseTakesNoBraceOneBraceOrBoth)
{
    const std::string bare = kBare;
    for (const std::string& text : {bare, "{" + bare, bare + "}", "{" + bare + "}"})
        EXPECT_EQ(kText, Guid::Parse(text).ToString()) << text;
}

TEST(Guid, BadTextIsTheNullGuid)
{
    const std::string bare = kBare;
    for (const std::string& text :
         {std::string(), std::string("{"), std::string("}"), std::string("{}"), bare.substr(1), bare + "0",
          "g" + bare.substr(1), " " + bare, bare + " ", bare + "\n", "+" + bare.substr(1), "{{" + bare + "}}",
          "{" + bare + "}\n", "(" + bare + ")", std::string("00112233445566778899aabbccddeeff"),
          std::string("00112233-4455-6677-8899aabbccddeeff--"), "\xef\xbb\xbf" + bare,
          std::string(1000, '{')})
        EXPECT_TRUE(Guid::Parse(text).IsNull()) << text;
}

TEST(Guid, ParseReadsUpToAZeroByteButLooksForTheLastBraceBehindIt)
{
    const std::string bare = kBare;
    EXPECT_EQ(kText, Guid::Parse(bare + std::string("\0x", 2)).ToString());
    EXPECT_EQ(kText, Guid::Parse("{" + bare + std::string("\0}", 2)).ToString());
    EXPECT_TRUE(Guid::Parse("{" + bare + "}" + std::string("\0x", 2)).IsNull());
}

TEST(Guid, ParseFailureCarriesToStringsText)
{
    const auto parse = []
    {
        FailNextAllocation();
        Guid::Parse(kText);
    };
    EXPECT_EQ("std::bad_alloc\nFailed to convert GUID to AString.", FailureText(parse));
}

TEST(Guid, ToStringFailureCarriesItsContext)
{
    const Guid value = Value();
    const auto print = [&value]
    {
        FailNextAllocation();
        value.ToString();
    };
    EXPECT_EQ("std::bad_alloc\nFailed to convert GUID to AString.", FailureText(print));
}

TEST(Guid, WideTextHasTheSameForm)
{
    EXPECT_EQ(L"{00112233-4455-6677-8899-aabbccddeeff}", Value().ToWString());
    EXPECT_EQ(Value(), Guid::Parse(L"{00112233-4455-6677-8899-AABBCCDDEEFF}"));
    EXPECT_EQ(Value(), Guid::Parse(std::wstring(L"00112233-4455-6677-8899-aabbccddeeff")));
    EXPECT_TRUE(Guid::Parse(L"00112233").IsNull());
}

TEST(Guid, WideParseTakesNoBraceOneBraceOrBoth)
{
    const std::wstring bare = L"00112233-4455-6677-8899-aabbccddeeff";
    for (const std::wstring& text : {bare, L"{" + bare, bare + L"}", L"{" + bare + L"}"})
        EXPECT_EQ(kText, Guid::Parse(text).ToString());
    for (const std::wstring& text : {std::wstring(), std::wstring(L"{"), L"{{" + bare + L"}}"})
        EXPECT_TRUE(Guid::Parse(text).IsNull());
}

TEST(Guid, WideTextOutsideTheLocaleIsAFailureWhereNarrowTextIsNull)
{
    EXPECT_EQ("Unicode string cannot be converted to multibyte string. Failed to get buffer size. \n"
              "Failed to convert WString to GUID.",
              FailureText([] { Guid::Parse(L"\u00e9"); }));
    EXPECT_TRUE(Guid::Parse("\xc3\xa9").IsNull());
}

TEST(Guid, WideParseFailureCarriesItsContextAlone)
{
    const auto parse = []
    {
        FailNextAllocation();
        Guid::Parse(L"{00112233-4455-6677-8899-aabbccddeeff}");
    };
    EXPECT_EQ("std::bad_alloc\nFailed to convert WString to GUID.", FailureText(parse));
}

TEST(Guid, ToWStringFailureCarriesItsContext)
{
    const Guid value = Value();
    const auto convert = [&value]
    {
        FailNextAllocation();
        value.ToWString();
    };
    EXPECT_EQ("std::bad_alloc\nFailed to convert GUID to WString.", FailureText(convert));
}

TEST(Guid, GeneratedValuesAreRandomAndDiffer)
{
    std::set<Guid> seen;
    for (int i = 0; i != 1000; ++i)
    {
        const Guid value = Guid::Generate();
        EXPECT_EQ('4', value.ToString()[15]) << value.ToString();
        EXPECT_NE(std::string::npos, std::string("89ab").find(value.ToString()[20])) << value.ToString();
        seen.insert(value);
    }
    EXPECT_EQ(1000u, seen.size());
}

TEST(Guid, CreatesInPlace)
{
    Guid value = Value();
    value.CreateInPlace();
    EXPECT_NE(Value(), value);
    EXPECT_FALSE(value.IsNull());
}

TEST(Guid, RecordHasItsFirstThreeFieldsInHostOrder)
{
    const SGuidRecord record = Value().ToRecord();
    EXPECT_EQ(0x00112233u, record.time_low);
    EXPECT_EQ(0x4455u, record.time_mid);
    EXPECT_EQ(0x6677u, record.time_hi_and_version);
    const std::uint8_t expected[] = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66,
                                     0x88, 0x99, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff};
    EXPECT_EQ(0, std::memcmp(expected, &record, sizeof(expected)));
}

TEST(Guid, IsMadeOfAndAssignedFromARecord)
{
    const SGuidRecord record = {0x00112233, 0x4455, 0x6677, {0x88, 0x99, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff}};
    Guid assigned;
    assigned = record;
    EXPECT_EQ(kText, Guid(record).ToString());
    EXPECT_EQ(kText, assigned.ToString());
}

TEST(Guid, SwapReversesEachOfTheFirstThreeFields)
{
    EXPECT_EQ("{33221100-5544-7766-8899-aabbccddeeff}", SwapGuidByteOrder(Value()).ToString());
}

TEST(Guid, SwapTwiceGivesTheValueBack) { EXPECT_EQ(Value(), SwapGuidByteOrder(SwapGuidByteOrder(Value()))); }

TEST(Guid, FromBytesTakesSixteenBytesOnly)
{
    const std::uint8_t bytes[17] = {};
    EXPECT_EQ("Failed to parse GUID value: invalid size of the specified data (15).",
              FailureText([&] { Guid::FromBytes(bytes, 15); }));
    EXPECT_EQ("Failed to parse GUID value: invalid size of the specified data (17).",
              FailureText([&] { Guid::FromBytes(bytes, 17); }));
    EXPECT_EQ("Failed to parse GUID value: invalid size of the specified data (0).",
              FailureText([] { Guid::FromBytes(nullptr, 0); }));
}

TEST(Guid, CopyIntoAnArrayMakesItSixteenBytesLong)
{
    const auto expect_copy = [](auto array)
    {
        Value().CopyTo(array);
        EXPECT_EQ(decltype(array)(reinterpret_cast<const char*>(kBytes), sizeof(kBytes)), array);
    };
    for (const std::size_t size : {0U, 3U, 16U, 40U})
    {
        expect_copy(cnt::plain_array_t(size));
        expect_copy(cnt::secure_array_t(size));
    }
}

TEST(Guid, ClearMakesItNull)
{
    Guid value = Value();
    EXPECT_FALSE(value.IsNull());
    value.Clear();
    EXPECT_TRUE(value.IsNull());
}

TEST(Guid, OnlySixteenZeroBytesAreNull)
{
    for (std::size_t i = 0; i != Guid::kSize; ++i)
    {
        std::uint8_t bytes[Guid::kSize] = {};
        bytes[i] = 1;
        EXPECT_FALSE(Guid::FromBytes(bytes, sizeof(bytes)).IsNull()) << i;
    }
}

TEST(Guid, ComparesFieldsFromLeftToRightAsUnsigned)
{
    for (std::size_t i = 0; i != Guid::kSize; ++i)
    {
        const Guid small = ValueWith(i, 0x7f);
        const Guid large = ValueWith(i, 0x80);
        EXPECT_TRUE(small < large && large > small && small != large) << i;
        EXPECT_FALSE(large < small || small > large || small == large) << i;
    }
    const auto is_greater = [](const char* left, const char* right)
    { return Guid::Parse(left) > Guid::Parse(right); };
    EXPECT_TRUE(is_greater("00000001-0000-0000-0000-000000000000", "00000000-ffff-ffff-ffff-ffffffffffff"));
    EXPECT_TRUE(is_greater("00000100-0000-0000-0000-000000000000", "00000001-0000-0000-0000-000000000000"));
    EXPECT_TRUE(is_greater("00000000-0100-0000-0000-000000000000", "00000000-0001-0000-0000-000000000000"));
    EXPECT_TRUE(is_greater("00000000-0000-0100-0000-000000000000", "00000000-0000-0001-0000-000000000000"));
    EXPECT_TRUE(is_greater("00000000-0000-0000-0100-000000000000", "00000000-0000-0000-0001-000000000000"));
    EXPECT_TRUE(is_greater("00000000-0000-0000-0000-010000000000", "00000000-0000-0000-0000-00ffffffffff"));
    EXPECT_TRUE(is_greater("00000000-0000-0000-0000-000000000100", "00000000-0000-0000-0000-0000000000ff"));
}

TEST(Guid, FirstFieldThatDiffersDecides)
{
    const auto is_greater = [](const char* left, const char* right)
    { return Guid::Parse(left) > Guid::Parse(right); };
    EXPECT_TRUE(is_greater("00000000-0001-0000-0000-000000000000", "00000000-0000-ffff-ffff-ffffffffffff"));
    EXPECT_TRUE(is_greater("00000000-0000-0001-0000-000000000000", "00000000-0000-0000-ffff-ffffffffffff"));
    EXPECT_TRUE(is_greater("00000000-0000-0000-0001-000000000000", "00000000-0000-0000-0000-ffffffffffff"));
}

TEST(Guid, EqualValuesAreNeitherLessNorGreater)
{
    const Guid left = Value();
    const Guid right = Value();
    EXPECT_TRUE(left == right);
    EXPECT_FALSE(left != right || left < right || left > right || right < left);
}

TEST(Guid, AssignmentCopiesAlsoOntoItself)
{
    Guid value = Value();
    Guid& same = value;
    value = same;
    EXPECT_EQ(kText, value.ToString());
}
