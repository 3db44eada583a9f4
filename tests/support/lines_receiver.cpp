#include "tests/support/lines_receiver.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <string_view>

#include <gtest/gtest.h>

namespace
{

bool IsTime(std::string_view text)
{
    const std::string_view shape = "[00.00.0000 00:00:00] ";
    return text.size() == shape.size() &&
           std::equal(text.begin(), text.end(), shape.begin(),
                      [](char c, char expected) {
                          return expected == '0' ? std::isdigit(static_cast<unsigned char>(c)) != 0
                                                 : c == expected;
                      });
}

std::string_view WithoutHead(std::string_view line)
{
    constexpr std::size_t kTimeSize = 22;
    const std::size_t thread_end = line.find("> ", kTimeSize);
    const bool whole = IsTime(line.substr(0, kTimeSize)) && line[kTimeSize] == '<' &&
                       thread_end < line.size() && std::isdigit(line[thread_end - 1]) != 0;
    EXPECT_TRUE(whole) << "no head: " << line;
    return whole ? line.substr(thread_end + 2) : line;
}

} // namespace

lines_receiver_t::lines_receiver_t(const std::string& path) { m_path = path; }

void lines_receiver_t::write(const std::string& text)
{
    if (m_hook)
        m_hook();
    m_messages.push_back(text);
}

std::uint64_t lines_receiver_t::get_size() const { return text().size(); }

std::string lines_receiver_t::text() const
{
    return std::accumulate(m_messages.begin(), m_messages.end(), std::string());
}

std::string WithoutHeads(const std::string& lines)
{
    std::string texts;
    const std::string_view all = lines;
    for (std::size_t begin = 0; begin < all.size();)
    {
        const std::size_t end = std::min(all.find('\n', begin), all.size() - 1);
        texts += WithoutHead(all.substr(begin, end - begin + 1));
        begin = end + 1;
    }
    return texts;
}
