#pragma once

#include <iostream>
#include <sstream>
#include <string>

#include "tests/support/redirected_stream.h"

// Takes what std::cout is given for as long as it lives.
class stdout_capture_t
{
public:
    stdout_capture_t() : m_redirected(std::cout, m_text.rdbuf()) {}
    std::string text() const { return m_text.str(); }

private:
    std::ostringstream m_text;
    redirected_stream_t m_redirected;
};
