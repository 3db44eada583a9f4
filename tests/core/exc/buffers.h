#pragma once

// Exceptions as the bytes of their buffer form, and what reading them says.

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "nelvo/core/cnt/buf_reader.h"
#include "nelvo/core/cnt/buf_writer.h"
#include "nelvo/core/exc/exc_base.h"
#include "tests/support/failure_text.h"
#include "tests/support/flat_buffer.h"

inline std::string Written(const exc::exc_base_t& exception)
{
    cnt::CBufWriter writer;
    exception.WriteTo(writer);
    return WrittenBy(writer);
}

// The base object that the bytes are.
inline exc::exc_base_t Read(const std::string& bytes)
{
    CBufReader reader(ArrayOf(bytes));
    return exc::exc_base_t(reader);
}

// What the exception says when it shall read these bytes; "no failure" if it can.
inline std::string ReadFailure(exc::exc_base_t& exception, const std::string& bytes)
{
    CBufReader reader(ArrayOf(bytes));
    return FailureText([&] { exception.ReadFrom(reader); });
}

// What a read says whose bytes end within a field. The field is an (i)nteger, a (s)tring or a (b)oolean.
inline std::string FailureOfCut(char kind, std::size_t field_start, std::size_t field_size, std::size_t end)
{
    if (kind == 'i')
        return OutOfBuffer(end, 4, field_start) + "\nFailed to extract integer value from buffer.";
    if (kind == 'b')
        return OutOfBuffer(end, 1, field_start) + "\nFailed to extract boolean value from buffer.";
    const std::string cause = end < field_start + 4 ? OutOfBuffer(end, 4, field_start)
                                                    : OutOfBuffer(end, field_size - 4, field_start + 4);
    return cause + "\nFailed to extract multi-byte string from buffer .";
}

// Cuts the record off at each of its bytes, and expects the read to say where it stopped. The kinds name
// those of the fields.
inline void
ExpectEachCutTold(const std::vector<std::string>& fields, const std::string& kinds,
                  const std::function<void(const std::string& bytes, const std::string& failure)>& expect)
{
    ASSERT_EQ(kinds.size(), fields.size());
    std::string before;
    for (std::size_t i = 0; i != fields.size(); before += fields[i++])
        for (std::size_t size = 0; size != fields[i].size(); ++size)
            expect(before + fields[i].substr(0, size),
                   FailureOfCut(kinds[i], before.size(), fields[i].size(), before.size() + size));
}
