#pragma once

// Takes what std::cout is given for as long as it lives.

#include <iostream>
#include <sstream>

class stdout_capture_t
{
public:
    stdout_capture_t() : m_before(std::cout.rdbuf(m_text.rdbuf())) {}
    ~stdout_capture_t() { std::cout.rdbuf(m_before); }
    stdout_capture_t(const stdout_capture_t&) = delete;
    stdout_capture_t& operator=(const stdout_capture_t&) = delete;

    std::string text() const { return m_text.str(); }

private:
    std::ostringstream m_text;
    std::streambuf* m_before;
};
