#include "tool/command_line.h"

#include <string>

#include <boost/program_options.hpp>

#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/logging/receiver/log_start.h"

namespace options = boost::program_options;

namespace
{

// The parser's own text for a word like --%original_token% cannot be asked for: its places for names are
// filled in one after the other, and a name that holds such a place is filled into itself until the memory
// ends. No option has a name with a percent sign, so the word is an unknown one.
void CheckName(const options::error_with_option_name& error)
{
    const std::string name = error.get_option_name();
    for (const char* const place : {"%canonical_option%", "%option%", "%original_token%"})
    {
        if (name.find(place) != std::string::npos)
            throw exc::runtime_exc_t("unrecognised option '%1'", name);
    }
}

std::string ReadLogName(int argc, const char* const argv[])
try
{
    options::options_description description("Command line options");
    description.add_options()("log,l", options::value<std::string>(), "log file name");

    // The parser passes over positional arguments unless it is given a description of them: an empty one
    // makes each an error.
    const options::positional_options_description no_positional;
    options::variables_map values;
    options::store(options::basic_command_line_parser<char>(argc, argv)
                       .options(description)
                       .positional(no_positional)
                       .style(0)
                       .run(),
                   values);
    const auto log = values.find("log");
    return log != values.end() ? boost::any_cast<std::string>(log->second.value()) : "nelvoagentid.log";
}
catch (const options::error_with_option_name& e)
{
    CheckName(e);
    throw;
}

} // namespace

void InitToolCommandLine(int argc, const char* const argv[])
try
{
    logging::start_log(ReadLogName(argc, argv), false, false, true);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to initialized", e);
}
