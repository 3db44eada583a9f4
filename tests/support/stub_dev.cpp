#include "tests/support/stub_dev.h"

#include <algorithm>
#include <stdexcept>

stub_dev_t::stub_dev_t(std::string_view input) : m_input(input) {}

void stub_dev_t::TakeOnly(std::uint64_t most, std::size_t after) { After(after).most = most; }

void stub_dev_t::Answer(std::uint64_t count, std::size_t after)
{
    After(after).is_false = true;
    After(after).count = count;
}

void stub_dev_t::Fail(const std::string& text, std::size_t after) { After(after).failure = text; }

stub_dev_t::answer_t stub_dev_t::Begin(const std::string& call, std::uint64_t count)
{
    const auto found = m_answers.find(m_calls.size());
    m_calls.push_back(call + ' ' + std::to_string(count));
    if (found == m_answers.end())
        return {};
    if (!found->second.failure.empty())
        throw std::runtime_error(found->second.failure);
    return found->second;
}

std::uint64_t stub_dev_t::write(const void* data, std::uint64_t count)
{
    const answer_t answer = Begin("write", count);
    if (answer.is_false)
        return answer.count;
    const std::uint64_t taken = std::min(count, answer.most);
    m_written.append(static_cast<const char*>(data), taken);
    return taken;
}

std::uint64_t stub_dev_t::read(void* buffer, std::uint64_t count)
{
    const answer_t answer = Begin("read", count);
    if (answer.is_false)
        return answer.count;
    const std::uint64_t delivered = std::min({count, answer.most, std::uint64_t{m_input.size()}});
    m_input.copy(static_cast<char*>(buffer), delivered);
    m_input.erase(0, delivered);
    return delivered;
}
