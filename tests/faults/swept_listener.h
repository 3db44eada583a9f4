#pragma once

#include <cstdint>
#include <string>

#include "nelvo/io/cout_multiplexor.h"

// Keeps what it is told in memory that it has already.
class swept_listener_t : public io::cout_target_t
{
public:
    swept_listener_t() { m_text.reserve(1000); }
    void write_text(const std::string& text) override { m_text += text; }
    std::uint64_t write(const void*, std::uint64_t count) override { return count; }
    std::uint64_t read(void*, std::uint64_t) override { return 0; }

    // What it was told since the last call.
    std::string text()
    {
        std::string text = m_text;
        m_text.clear();
        return text;
    }

private:
    std::string m_text;
};
