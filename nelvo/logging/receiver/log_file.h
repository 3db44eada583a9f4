#pragma once

// Where the text of a log ends up. A log has one receiver and calls it under its own lock, so a receiver
// needs none.

#include <cstdint>
#include <string>

namespace util
{
class zip_writer_t;
}

namespace logging::receiver
{

class log_file_t
{
public:
    log_file_t() = default;
    log_file_t(const log_file_t&) = delete;
    log_file_t& operator=(const log_file_t&) = delete;

    // Takes one message, however many lines it has, each with its line end.
    virtual void write(const std::string& text) = 0;

    // The log's name; empty for a log that is no file. May be asked without the lock, while another thread
    // writes: the path never changes.
    virtual std::string get_path() const;

    // What each line ends in, a line feed.
    virtual std::string get_eol() const;

    // Bytes written so far, as far as they can grow too many; 0 for a log that is no file.
    virtual std::uint64_t get_size() const = 0;

    // Moves the content to an archive and starts anew; nothing for a log that is no file.
    virtual void compress_to(util::zip_writer_t& writer) = 0;

    virtual ~log_file_t() = default;

protected:
    bool m_flush = false; // flush after each write
    std::string m_path;
    std::string m_eol = "\n";
};

} // namespace logging::receiver
