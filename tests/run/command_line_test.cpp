#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/run/machine.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

const char kId[] = "{00112233-4455-6677-8899-aabbccddeeff}";
const char kPrinted[] = "{00112233-4455-6677-8899-aabbccddeeff}\n";

using options_t = std::vector<std::string>;

void ExpectAccepted(const options_t& options, const std::string& log)
{
    machine_t machine;
    machine.AgentFile(kId);

    EXPECT_THAT(machine.Run(options), Prints(kPrinted)) << testing::PrintToString(options);
    EXPECT_EQ(kId, machine.Read("/etc/nelvoagentid"));
    EXPECT_THAT(machine.NewPaths(), ElementsAre(log)) << testing::PrintToString(options);
}

// Nothing is looked for, generated or logged.
void ExpectRefused(const options_t& options, const std::string& text)
{
    machine_t machine;

    EXPECT_THAT(machine.Run(options), FailsWith(text + "\nFailed to initialized\n"))
        << testing::PrintToString(options);
    EXPECT_THAT(machine.NewPaths(), IsEmpty());
}

} // namespace

TEST(CommandLine, MayBeEmpty) { ExpectAccepted({}, "/work/nelvoagentid.log"); }

TEST(CommandLine, LogNameStandsInAnyOfItsForms)
{
    ExpectAccepted({"--log=/tmp/x.log"}, "/tmp/x.log");
    ExpectAccepted({"--log", "/tmp/x.log"}, "/tmp/x.log");
    ExpectAccepted({"-l", "/tmp/x.log"}, "/tmp/x.log");
    ExpectAccepted({"-l/tmp/x.log"}, "/tmp/x.log");
}

TEST(CommandLine, LongNameMayBeShortened)
{
    ExpectAccepted({"--lo", "/tmp/x.log"}, "/tmp/x.log");
    ExpectAccepted({"--l=/tmp/x.log"}, "/tmp/x.log");
}

TEST(CommandLine, LogNameMayLookLikeAnOption)
{
    ExpectAccepted({"--log", "--foo"}, "/work/--foo");
    ExpectAccepted({"--log", "--log"}, "/work/--log");
    ExpectAccepted({"--log", "--"}, "/work/--");
    ExpectAccepted({"-l", "-lx"}, "/work/-lx");
    ExpectAccepted({"-l=x"}, "/work/=x");
    ExpectAccepted({"-log"}, "/work/og");
}

TEST(CommandLine, TwoDashesEndTheOptions) { ExpectAccepted({"--"}, "/work/nelvoagentid.log"); }

TEST(CommandLine, UnknownOptionIsRefused)
{
    ExpectRefused({"--help"}, "unrecognised option '--help'");
    ExpectRefused({"--LOG", "x"}, "unrecognised option '--LOG'");
    ExpectRefused({"--log", "x", "--version"}, "unrecognised option '--version'");
    ExpectRefused({"-h"}, "unrecognised option '-h'");
}

// The parser would fill such a name into itself for ever.
TEST(CommandLine, UnknownOptionMayHoldAnyPercentSigns)
{
    ExpectRefused({"-%original_token%"}, "unrecognised option '-%original_token%'");
    ExpectRefused({"--%original_token%"}, "unrecognised option '--%original_token%'");
    ExpectRefused({"--%canonical_option%"}, "unrecognised option '--%canonical_option%'");
    ExpectRefused({"--%canonical_option%=x"}, "unrecognised option '--%canonical_option%=x'");
    ExpectRefused({"--%option%="}, "unrecognised option '--%option%'");
    ExpectRefused({"--%1%%2"}, "unrecognised option '--%1%%2'");
    ExpectRefused({"--log", "x", "--log=%original_token%"},
                  "option '--log' cannot be specified more than once");
    ExpectAccepted({"--log=%original_token%"}, "/work/%original_token%");
}

// Any other sign is the parser's business.
TEST(CommandLine, UnknownOptionWithAPercentSignIsRefusedInTheParsersWords)
{
    ExpectRefused({"--50%"}, "unrecognised option '--50%'");
    ExpectRefused({"--%x="}, "the argument for option '--%x' should follow immediately after the equal sign");
    ExpectRefused({"--%prefix%"}, "unrecognised option '----'");
}

TEST(CommandLine, MissingLogNameIsRefused)
{
    ExpectRefused({"--log"}, "the required argument for option '--log' is missing");
    ExpectRefused({"-l"}, "the required argument for option '--log' is missing");
}

TEST(CommandLine, ShortFormIsNoLogName)
{
    ExpectRefused({"--log", "-l"}, "the required argument for option '--log' is missing");
    ExpectRefused({"-l", "-l"}, "the required argument for option '--log' is missing");
}

TEST(CommandLine, NothingAfterTheEqualSignIsRefused)
{
    ExpectRefused({"--log="},
                  "the argument for option '--log' should follow immediately after the equal sign");
    ExpectRefused({"--lo="}, "the argument for option '--lo' should follow immediately after the equal sign");
}

TEST(CommandLine, LogGivenTwiceIsRefused)
{
    ExpectRefused({"--log", "x", "--log", "y"}, "option '--log' cannot be specified more than once");
    ExpectRefused({"-lx", "--log=x"}, "option '--log' cannot be specified more than once");
}

TEST(CommandLine, PositionalArgumentIsRefused)
{
    const std::string text = "too many positional options have been specified on the command line";
    ExpectRefused({"x"}, text);
    ExpectRefused({""}, text);
    ExpectRefused({"-"}, text);
    ExpectRefused({"--", "x"}, text);
    ExpectRefused({"-log", "x"}, text);
    ExpectRefused({"--log", "x", "y"}, text);
}

TEST(CommandLine, NameOfTheProgramIsTheCallersChoice)
{
    for (const char* const name : {"", "nelvoagentid", "--help", "/a/long/way/to it"})
    {
        machine_t machine;
        machine.AgentFile(kId);
        machine.StartAs(name);

        EXPECT_THAT(machine.Run(), Prints(kPrinted)) << name;
    }
}
