#pragma once

// The command line: one option, --log or -l, with the name of the run's log, "nelvoagentid.log" in the
// working directory without it. An empty name stands for standard output.

// Reads the command line and starts the log, with a size check, by logging::start_log; a log that cannot be
// started is no failure. Throws exc::runtime_exc_t for an unknown or repeated option, a missing value or a
// positional argument: what Boost program options say of it, and the line "Failed to initialized".
void InitToolCommandLine(int argc, const char* const argv[]);
