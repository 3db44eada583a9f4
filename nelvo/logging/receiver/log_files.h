#pragma once

// Which file a log goes to. Paths are used as they stand, a relative one from the working directory. What
// cannot be created is passed over, in this order: the given paths, one of the same name under
// /tmp/NelvoBackup/; and at the chosen path, if its file is locked, the numbered names a.1.log to a.999.log.

#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

namespace logging::receiver
{

class log_file_t;

// The receiver for the path that pick_log_path gives, rotated if it is too big. What fails after the pick, as
// on a FIFO, is not passed over for the next path. On a std::exception, prints "Failed to initialize log
// [<first path, or n/a>]." and the exception's text on standard output, and the result is null.
boost::shared_ptr<log_file_t> create_file_log(const std::vector<std::string>& paths);

// The same for one path. One without a file name is a failure like others here.
boost::shared_ptr<log_file_t> reopen_file_log(const std::string& path);

// The first of the paths at which create_test succeeds, or fallback_log_path of the first one. Throws
// exc::runtime_exc_t if there are none. If none will do and the first has no file name, the process ends by
// std::terminate.
std::string pick_log_path(const std::vector<std::string>& paths);

// Creates the folders above the path and opens the file once, creating it with mode 0664 less the umask.
// Throws posix::errno_exc_t, with "Cannot create a log file." if the file cannot be opened.
void create_test(const std::string& path);

// The path's file name under /tmp/NelvoBackup/, which is created. Only inside a handler: a path without a
// file name rethrows the exception in flight.
std::string fallback_log_path(const std::string& path);

// Opens and locks the path or, while that is locked, the first of 999 numbered names that is not; real_path
// is the name that it took. Throws exc::runtime_exc_t if all of them are locked, and what else the receiver
// throws.
boost::shared_ptr<log_file_t> open_unlocked_log_file(const std::string& path, std::string& real_path);

// "a.log" with "1" is "a.1.log"; the ending ".log" is kept in any case ("a.LOG": "a.1.LOG"), a dot at the end
// stands for no ending ("a.": "a.1"), and any other name gets one ("a.txt": "a.txt.1.log").
std::string numbered_log_name(const std::string& path, const std::string& suffix);

} // namespace logging::receiver
