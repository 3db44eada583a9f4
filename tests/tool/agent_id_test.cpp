#include "tool/agent_id.h"

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/logging/log.h"
#include "tests/support/failing_memory.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/temp_folder.h"

namespace
{

const char kBraced[] = "{00112233-4455-6677-8899-aabbccddeeff}";
const char kOther[] = "{99999999-9999-9999-9999-999999999999}";

// What the lookup leaves in an id that holds another one before.
struct lookup_t
{
    bool found;
    std::string id;
};

lookup_t Look(const std::string& path)
{
    Guid id = Guid::Parse(kOther);
    const bool found = LookUuidInFile(path.c_str(), id);
    return {found, id.ToString()};
}

lookup_t LookIn(const std::string& text)
{
    const temp_folder_t folder;
    WriteFile(folder / "id", text);
    return Look(folder / "id");
}

std::string FirstToken(const std::string& text)
{
    const temp_folder_t folder;
    WriteFile(folder / "file", text);
    return ReadFirstFileToken(folder / "file");
}

} // namespace

TEST(ParseDmidecodeLine, GivesTheValue)
{
    EXPECT_EQ("00112233-4455-6677-8899-AABBCCDDEEFF",
              ParseDmidecodeLine("\tUUID: 00112233-4455-6677-8899-AABBCCDDEEFF"));
}

TEST(ParseDmidecodeLine, TrimsBothEndsOfTheValue)
{
    EXPECT_EQ("a b", ParseDmidecodeLine("x: \t\r\na b\n\r\t "));
}
TEST(ParseDmidecodeLine, OtherWhiteSpaceStays) { EXPECT_EQ("\va\f", ParseDmidecodeLine("x: \va\f ")); }
TEST(ParseDmidecodeLine, EmptyNameCounts) { EXPECT_EQ("a", ParseDmidecodeLine(":a")); }
TEST(ParseDmidecodeLine, ColonAtTheEndOpensNoFurtherValue) { EXPECT_EQ("a", ParseDmidecodeLine("x:a:")); }
TEST(ParseDmidecodeLine, BlankValueIsEmpty) { EXPECT_EQ("", ParseDmidecodeLine("x: \t")); }

TEST(ParseDmidecodeLine, LineThatDoesNotSplitInTwoIsEmpty)
{
    EXPECT_EQ("", ParseDmidecodeLine(""));
    EXPECT_EQ("", ParseDmidecodeLine("a"));
    EXPECT_EQ("", ParseDmidecodeLine("a:"));
    EXPECT_EQ("", ParseDmidecodeLine(":"));
    EXPECT_EQ("", ParseDmidecodeLine("a:b:c"));
    EXPECT_EQ("", ParseDmidecodeLine("a::b"));
    EXPECT_EQ("", ParseDmidecodeLine("a:b::"));
}

TEST(ParseDmidecodeLine, ColonAloneBehindTheFirstIsAnEmptyValue) { EXPECT_EQ("", ParseDmidecodeLine("a::")); }

TEST(LookUuidInFile, FindsTheIdAsItStands)
{
    const lookup_t lookup = LookIn(std::string(" ") + kBraced + " more");

    EXPECT_TRUE(lookup.found);
    EXPECT_EQ(kBraced, lookup.id);
}

TEST(LookUuidInFile, BadIdLeavesTheNullIdBehind)
{
    for (const char* const text : {"", " ", "words", "{00000000-0000-0000-0000-000000000000}"})
    {
        const lookup_t lookup = LookIn(text);

        EXPECT_FALSE(lookup.found) << text;
        EXPECT_EQ("{00000000-0000-0000-0000-000000000000}", lookup.id) << text;
    }
}

TEST(LookUuidInFile, AbsentFileLeavesTheIdUntouched)
{
    const temp_folder_t folder;
    const lookup_t lookup = Look(folder / "absent");

    EXPECT_FALSE(lookup.found);
    EXPECT_EQ(kOther, lookup.id);
}

TEST(LookUuidInFile, FailureIsNotFoundAndLeavesTheIdUntouched)
{
    const temp_folder_t folder;
    WriteFile(folder / "file", kBraced);
    const lookup_t lookup = Look(folder / "file/below");

    EXPECT_FALSE(lookup.found);
    EXPECT_EQ(kOther, lookup.id);
}

// Whichever piece of memory is missing. A failure that is none of ours is told like any other.
TEST(LookUuidInFile, WithoutMemoryItFindsNothingAndThrowsNothing)
{
    const temp_folder_t folder;
    const std::string path = folder / "id";
    WriteFile(path, kBraced);
    const auto receiver = boost::make_shared<lines_receiver_t>();
    logging::GetProcessLog()->set_receiver(receiver);
    Guid id;
    bool all_found = false;
    for (std::size_t allocation = 0; !all_found; ++allocation)
    {
        FailNextAllocation(allocation);
        const bool found = LookUuidInFile(path.c_str(), id);
        all_found = !HasAllocationFailed();
        EXPECT_EQ(all_found, found) << allocation;
    }
    logging::GetProcessLog()->set_receiver({});

    EXPECT_THAT(WithoutHeads(receiver->text()),
                testing::HasSubstr("agentid| ERR |Failed to look uuid in file: " + path +
                                   " \n"
                                   "agentid| >>  |std::bad_alloc\n"
                                   "agentid| >>  |An exception was thrown from thread [n/a].\n"));
}

TEST(LookUuidInFile, DirectoryHoldsNoId)
{
    const temp_folder_t folder;
    EXPECT_FALSE(Look(folder.path()).found);
}

TEST(ReadFirstFileToken, SkipsWhiteSpaceAndStopsAtTheNext)
{
    EXPECT_EQ("one", FirstToken("\n \t\v\f\rone two"));
    EXPECT_EQ("one", FirstToken("one\ntwo"));
}

TEST(ReadFirstFileToken, FileWithoutTokenGivesAnEmptyText)
{
    EXPECT_EQ("", FirstToken(""));
    EXPECT_EQ("", FirstToken(" \n"));
}

TEST(ReadFirstFileToken, AnyOtherByteBelongsToTheToken)
{
    EXPECT_EQ(std::string("\xEF\xBB\xBF\0\x01\xA0", 6),
              FirstToken(std::string("\xEF\xBB\xBF\0\x01\xA0 x", 8)));
}

TEST(ReadFirstFileToken, DirectoryGivesAnEmptyText)
{
    const temp_folder_t folder;
    EXPECT_EQ("", ReadFirstFileToken(folder.path()));
}

TEST(ReadFirstFileToken, FileThatCannotBeOpenedIsNamed)
{
    const temp_folder_t folder;
    const std::string path = folder / "absent";
    try
    {
        ReadFirstFileToken(path);
        FAIL();
    }
    catch (const posix::errno_exc_t& e)
    {
        EXPECT_EQ("No such file or directory\nFailed to open file [" + path + "].", std::string(e.what()));
    }
}
