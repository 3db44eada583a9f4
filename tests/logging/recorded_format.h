#pragma once

// A line format that stands in for the library's, which is not linked in then. It tells the order in which
// the formats of channels are built, and writes the severity as a number:
//
//   tag severity 1 indent 0: text

#include <string>
#include <vector>

// The tags of all line formats so far, the oldest first.
const std::vector<std::string>& BuiltTags();
