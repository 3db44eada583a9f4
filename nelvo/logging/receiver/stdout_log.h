#pragma once

// A log on standard output, framed by two lines of 74 slashes: one when it is created, one when it ends.
// The process log's comes at exit.

#include <boost/shared_ptr.hpp>

#include "nelvo/logging/receiver/log_file.h"

namespace logging::receiver
{

class stdout_log_file_t : public log_file_t
{
public:
    // Does not flush.
    void write(const std::string& text) override;
    std::uint64_t get_size() const override { return 0; }
    void compress_to(util::zip_writer_t&) override {}

    // Prints the closing line.
    ~stdout_log_file_t() override;
};

// Prints the opening line. On a std::exception it prints "Failed to initialize stdout log." and, on the
// next line, the exception's text on standard output, and the result is null.
boost::shared_ptr<log_file_t> create_stdout_log();

} // namespace logging::receiver
