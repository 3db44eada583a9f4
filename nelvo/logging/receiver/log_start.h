#pragma once

// Starting the process log, and what can be asked of it. A program starts its log once, from one thread,
// before it starts others. A log that cannot be started is no failure: messages then vanish.

#include <string>
#include <vector>

namespace logging
{

// Sets the debug flag and opens the log with the name, or on standard output if the name is empty.
void start_log(const std::string& name, bool debug, bool mask_sensitive, bool size_check);

// Gives the process log a receiver, create_file_log's or, if there are no paths, one on standard output, and
// its two flags. False if there is no receiver to be had, which leaves the log as it was.
bool open_log(const std::vector<std::string>& paths, bool mask_sensitive, bool size_check);

// Reads a list that commas separate and appends its paths, unpacked by util::UnpackLogName; what that throws
// passes, and the paths before it are kept. "debug" sets the debug flag; "flush", "cout", "cerr", empty words
// and words that begin with + or - stand for nothing. False if there was no path. Prints a line on standard
// output.
bool parse_log_params(const std::string& params, std::vector<std::string>& paths);

// Both in one, without a size check: opens the log that the list names and prints on standard output what
// came of it. A list without a path opens none. Throws what parse_log_params throws.
void start_log_from_params(const std::string& params, bool mask_sensitive);

// The same, but a std::exception is printed on standard output, behind "Unable to create log,".
void start_log_from_params_safe(const std::string& params, bool mask_sensitive);

// Starts the process log's file anew, empty: closes it, deletes it and opens it again (reopen_file_log).
// Nothing for a log without a path. What stops the deletion passes, and the log is left without a receiver.
void reset_log();

// Closes the process log for good (log_t::close).
void close_log();

// The path of the process log; empty if it has no receiver, or none with a path.
std::string get_log_file_path();

// The debug flag. Nothing here depends on it.
bool is_debug_log();

} // namespace logging
