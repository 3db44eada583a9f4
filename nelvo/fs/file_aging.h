#pragma once

// Old copies of a file, told apart by an age in their names: with the extension ".log", a.log is followed by
// a.1.log, a.2.log and so on, the oldest with the highest age.

#include <string>

namespace util
{

// The name of the copy of that age. Age 0 is the path itself. If the path ends in the extension, in either
// case, the age stands in front of it and the extension as given here ends the name. Otherwise the age ends
// the name, after a dot that is added unless the path ends in one. An extension given without its dot leaves
// that dot in front of the age's own.
// Kept: AgedFileName.ExtensionWithoutItsDotLeavesTheDotInFront
//
//   AgedFileName("a.log", ".log", 2)      "a.2.log"
//   AgedFileName("a.LOG", ".log", 2)      "a.2.log"
//   AgedFileName("a.txt", ".log", 2)      "a.txt.2"
//   AgedFileName("a.gz", "gz", 2)         "a..2gz"
std::string AgedFileName(const std::string& path, const std::string& extension, int age);

// Makes room at the path: the copy of age limit is removed, each younger one becomes older by one, and the
// file itself becomes the copy of age 1. Limit 0 removes the file itself; a negative one does nothing. Copies
// that are missing are passed over.
//
// A failure leaves what was moved where it is, and gets the context "Cannot age file. File path: [<path>].
// Extension: [<extension>]. Ages limit: [<limit>]."
void AgeFile(int limit, const std::string& path, const std::string& extension);

} // namespace util
