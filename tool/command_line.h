#pragma once

// The command line: one option, --log or -l, with the name of the log file.

// Reads the command line. Throws what Boost program options say of an unknown or repeated option, a missing
// value or a positional argument, with the context line "Failed to initialized".
void InitToolCommandLine(int argc, const char* const argv[]);
