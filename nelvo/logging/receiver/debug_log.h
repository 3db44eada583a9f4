#pragma once

// The receiver for a debugger's console, of which this platform has none: it swallows everything.

#include "nelvo/logging/receiver/log_file.h"

namespace logging::receiver
{

class COutputDebugStringLog : public log_file_t
{
public:
    void write(const std::string&) override {}
    std::uint64_t get_size() const override { return 0; }
    void compress_to(util::zip_writer_t&) override {}
};

} // namespace logging::receiver
