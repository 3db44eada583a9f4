#pragma once

// A log receiver that keeps what it is given.

#include <functional>
#include <string>
#include <vector>

#include "nelvo/logging/receiver/log_file.h"

class lines_receiver_t : public logging::receiver::log_file_t
{
public:
    explicit lines_receiver_t(const std::string& path = {});

    void write(const std::string& text) override;
    std::uint64_t get_size() const override;
    void compress_to(util::zip_writer_t&) override {}

    void set_eol(const std::string& eol) { m_eol = eol; }

    // Called by each write before the text is kept; may throw or log.
    void set_hook(std::function<void()> hook) { m_hook = std::move(hook); }

    // One text a write.
    const std::vector<std::string>& messages() const { return m_messages; }
    std::string text() const;

private:
    std::function<void()> m_hook;
    std::vector<std::string> m_messages;
};

// The lines without their "[time] <thread> "; fails the test if one has no such head.
std::string WithoutHeads(const std::string& lines);
