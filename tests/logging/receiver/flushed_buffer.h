#pragma once

#include <sstream>

// A stream's buffer that counts how often it is flushed.
class flushed_buffer_t : public std::stringbuf
{
public:
    int m_flushes = 0;

protected:
    int sync() override
    {
        ++m_flushes;
        return 0;
    }
};
