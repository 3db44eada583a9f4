#pragma once

// A log in a file, which it holds locked: flock(2), exclusive, from construction to destruction, so that no
// two logs write one file, in one process or in two.

#include "nelvo/logging/receiver/log_file.h"
#include "nelvo/posix/posix_file_fwd.h"

namespace posix
{

class posix_log_file_t : public logging::receiver::log_file_t
{
public:
    // Opens the file, or creates it with mode 0666 less the umask, and goes to its end. Throws
    // exc::file_locked_exc_t if somebody else holds the lock, and posix::errno_exc_t for any other failure
    // ("Failed to lock file [<name>]." for that of the lock).
    explicit posix_log_file_t(const std::string& name);

    void write(const std::string& text) override;
    std::string get_path() const override;
    std::uint64_t get_size() const override;

    // Copies the whole file to the archive, then empties it in place and goes to its start; it stays open and
    // locked. If a step fails, the context is "Cannot compress log file. Log: [<path>]."; nothing is cut
    // before all has been copied, but the next text is written where the copying stopped, over old text.
    void compress_to(util::zip_writer_t& writer) override;

    // Unlocks; a failure is dropped.
    ~posix_log_file_t() override;

private:
    posix_file_ptr_t m_file;
};

} // namespace posix
