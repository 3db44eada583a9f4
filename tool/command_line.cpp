#include "tool/command_line.h"

#include <string>

#include <boost/program_options.hpp>

#include "nelvo/core/exc/rethrow.h"

namespace options = boost::program_options;

void InitToolCommandLine(int argc, const char* const argv[])
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
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to initialized", e);
}
