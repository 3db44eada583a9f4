#pragma once

#include <boost/make_shared.hpp>

#include "nelvo/logging/log.h"

// A receiver that keeps nothing and knows whether its size has been looked at.
class asked_receiver_t : public logging::receiver::log_file_t
{
public:
    void write(const std::string&) override {}
    std::uint64_t get_size() const override
    {
        m_asked = true;
        return 0;
    }
    void compress_to(util::zip_writer_t&) override {}

    bool is_asked() const { return m_asked; }

private:
    mutable bool m_asked = false;
};

// Logs until the size is checked, so that the next check is a thousand messages away, whatever has been
// logged before. Leaves the log without a receiver, its size check on.
inline void CountAnew(logging::log_t& log)
{
    const auto receiver = boost::make_shared<asked_receiver_t>();
    const auto format = boost::make_shared<logging::format::line_format_t>("");
    log.set_receiver(receiver);
    log.set_size_check(true);
    while (!receiver->is_asked())
        log.write(logging::format::kInfo, 0, format, "");
    log.set_receiver({});
}
