#pragma once

#include <ostream>
#include <streambuf>

// While one lives, the buffer takes what the stream is given.
class redirected_stream_t
{
public:
    redirected_stream_t(std::ostream& stream, std::streambuf* buffer)
        : m_stream(stream), m_before(stream.rdbuf(buffer))
    {
    }
    ~redirected_stream_t() { m_stream.rdbuf(m_before); }
    redirected_stream_t(const redirected_stream_t&) = delete;
    redirected_stream_t& operator=(const redirected_stream_t&) = delete;

private:
    std::ostream& m_stream;
    std::streambuf* m_before;
};
