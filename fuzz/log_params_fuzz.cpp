// What a program's user may set: the parameters of the log, agent options as NAME=VALUE, and the tool's
// command line, an argument a line.

#include "nelvo/logging/receiver/log_start.h"

#include <iostream>

#include "fuzz/fuzz_target.h"
#include "nelvo/context/agent_options.h"
#include "nelvo/context/set_agent_option.h"
#include "nelvo/core/util/log_name.h"
#include "nelvo/core/util/parse.h"
#include "tool/command_line.h"

namespace
{

using paths_t = std::vector<std::string>;

// Standard output is printed to by what reads parameters.
class silence_t
{
public:
    silence_t() : m_buffer(std::cout.rdbuf(nullptr)) {}
    silence_t(const silence_t&) = delete;
    silence_t& operator=(const silence_t&) = delete;
    ~silence_t() { std::cout.rdbuf(m_buffer); }

private:
    std::streambuf* m_buffer;
};

bool IsPath(const std::string& word)
{
    return !word.empty() && word.front() != '+' && word.front() != '-' && word != "debug" &&
           word != "flush" && word != "cout" && word != "cerr";
}

// The paths up to the first that cannot be unpacked. False if there is one.
bool ExpectedPaths(std::string_view params, paths_t& paths)
{
    return fuzz::Reads(
        [&]
        {
            for (const std::string& word : fuzz::Pieces(params, ','))
            {
                if (IsPath(word))
                    paths.push_back(util::UnpackLogName(word));
            }
        });
}

void TryParams(std::string_view params)
{
    paths_t paths;
    bool has_path = false;
    const bool is_read =
        fuzz::Reads([&] { has_path = logging::parse_log_params(std::string(params), paths); });
    paths_t expected;
    fuzz::Require(ExpectedPaths(params, expected) == is_read && paths == expected);
    fuzz::Require(!is_read || has_path == !paths.empty());
}

// A packed name comes back.
void TryPackedName(std::string_view name)
{
    const std::string packed = util::PackLogName(name);
    paths_t paths;
    fuzz::Require(logging::parse_log_params(packed, paths) == IsPath(packed));
    fuzz::Require(paths == (IsPath(packed) ? paths_t{std::string(name)} : paths_t{}));
}

void TryNumber(const std::string& value)
{
    CAgentOptions record;
    unsigned long number = 0;
    const bool is_number = fuzz::Reads([&] { number = util::ParseUnsignedLong(value); });
    const auto set = [&](const char* name)
    { return fuzz::Reads([&] { SetAgentOption(record, name, value); }); };
    fuzz::Require(set("notificationtimeoutsec") == is_number && set("StgOversizeGbLimit") == is_number &&
                  set("FSAWAREITEMTODELETEMINSIZE") == is_number);
    if (is_number)
        fuzz::Require(record.GetNotificationTimeoutSec() == static_cast<std::uint32_t>(number) &&
                      record.GetStgOversizeLimitMib() == static_cast<std::uint32_t>(number << 10U) &&
                      record.GetFsAwareItemToDeleteMinSize() == number);
    else
        fuzz::Require(record.GetNotificationTimeoutSec() == CAgentOptions().GetNotificationTimeoutSec());
}

void TryFlag(const std::string& value)
{
    CAgentOptions record;
    for (const char* const name : {"VddkVmSearchPatch", "vddknonuniqueuuidpatch", "CollectBackupStat"})
        SetAgentOption(record, name, value);
    const bool flag = util::ParseBool(value);
    fuzz::Require(record.GetVddkVmSearchPatch() == flag && record.GetVddkNonUniqueUuidPatch() == flag &&
                  record.GetCollectBackupStat() == flag);
}

void TryOption(std::string_view text)
{
    const std::size_t end = std::min(text.find('='), text.size());
    const std::string name(text.substr(0, end));
    const std::string value(text.substr(std::min(end + 1, text.size())));
    CAgentOptions record;
    fuzz::Reads([&] { SetAgentOption(record, name, value); });
    TryNumber(value);
    TryFlag(value);
}

// Two words at the end, of which an option takes one at most, make each line bad: no log is opened.
void TryCommandLine(std::string_view text)
{
    const std::vector<std::string> words = fuzz::Pieces(text, '\n');
    std::vector<const char*> argv{"tool"};
    for (const std::string& word : words)
        argv.push_back(word.c_str());
    argv.insert(argv.end(), {"word", "word"});
    fuzz::Require(!fuzz::Reads([&] { InitToolCommandLine(static_cast<int>(argv.size()), argv.data()); }));
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const silence_t silence;
    TryParams(Text(data, size));
    TryPackedName(Text(data, size));
    TryOption(Text(data, size));
    TryCommandLine(Text(data, size));
}
