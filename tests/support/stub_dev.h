#pragma once

// A device under a stream that keeps what it is given, delivers a text and then nothing, and answers a call
// falsely where it is told to.
//
//   const auto device = boost::make_shared<stub_dev_t>("\x04\x03\x02\x01");
//   device->TakeOnly(3);          the next call
//   device->Answer(4, 1);         the call behind that one
//   device->Fail("no disk", 2);

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "nelvo/io/io_dev.h"
#include "tests/support/wiped_bytes.h"

class stub_dev_t : public io::io_dev_t
{
public:
    explicit stub_dev_t(std::string_view input = {});

    // What the call does that comes after so many others; reads and writes count alike. It transfers no more
    // than so many bytes; it transfers nothing and returns this count; it throws a std::runtime_error.
    void TakeOnly(std::uint64_t most, std::size_t after = 0);
    void Answer(std::uint64_t count, std::size_t after = 0);
    void Fail(const std::string& text, std::size_t after = 0);

    std::uint64_t write(const void* data, std::uint64_t count) override;
    std::uint64_t read(void* buffer, std::uint64_t count) override;

    // The calls so far: "write 4", "read 4", with the count that was asked for.
    const std::vector<std::string>& calls() const { return m_calls; }

    // What was taken.
    const std::string& written() const { return m_written; }

private:
    struct answer_t
    {
        std::uint64_t most = UINT64_MAX;
        bool is_false = false;
        std::uint64_t count = 0;
        std::string failure;
    };

    answer_t& After(std::size_t calls) { return m_answers[m_calls.size() + calls]; }
    answer_t Begin(const std::string& call, std::uint64_t count);

    wiped_bytes_t m_input;
    std::string m_written;
    std::vector<std::string> m_calls;
    std::map<std::size_t, answer_t> m_answers;
};
