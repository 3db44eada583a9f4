#include "nelvo/core/exc/exc_base.h"

#include <algorithm>

#include <boost/make_shared.hpp>

bool exc_trace_t::HasEvent(std::int32_t code) const
{
    return std::any_of(events.begin(), events.end(),
                       [code](const event_t& event) { return event.first == code; });
}

void exc_trace_t::Merge(const exc_trace_t& other)
{
    properties.insert(other.properties.begin(), other.properties.end());
    events.insert(events.end(), other.events.begin(), other.events.end());
}

std::string exc_trace_t::ToText() const
{
    std::string text;
    const auto add_line = [&text](const std::string& line) { (text += text.empty() ? "" : "\n") += line; };
    for (const auto& [key, value] : properties)
        add_line(util::Format("--tr:property:%1:%2", key, value));
    for (const auto& [code, info] : events)
        add_line(util::Format("--tr:event:%1:%2", code, info));
    return text;
}

namespace exc
{
namespace
{

constexpr std::size_t kMostAround = 6; // a line feed and "--tr:"

void AppendToTexts(const exc_entry_t& entry, bool first, std::string& marked_text, std::string& plain_text)
{
    if (!first)
    {
        marked_text += '\n';
        plain_text += '\n';
    }
    if (entry.marked)
        marked_text += "--tr:";
    marked_text += entry.text;
    plain_text += entry.text;
}

} // namespace

exc_base_t::exc_base_t() : m_thread_id(pthread_self()) {}

exc_base_t::exc_base_t(const std::string& message) : exc_base_t() { AddMessage(message); }

boost::shared_ptr<exc_base_t> exc_base_t::Clone() const { return boost::make_shared<exc_base_t>(*this); }

void exc_base_t::Rethrow() const { throw exc_base_t(*this); }

void exc_base_t::Translate(ITranslator& translator)
{
    std::vector<exc_entry_t> translated = m_entries;
    for (exc_entry_t& entry : translated)
        entry.text = translator.Translate(entry.text);
    SetEntries(std::move(translated));
}

void exc_base_t::AddMessage(std::string text) { AddEntry({std::move(text), false}); }

void exc_base_t::AddMarkedMessage(std::string text) { AddEntry({std::move(text), true}); }

void exc_base_t::AddEvent(std::int32_t code) { AddEvent(code, {}); }

void exc_base_t::AddEvent(std::int32_t code, std::string info)
{
    m_trace.events.emplace_back(code, std::move(info));
}

std::string exc_base_t::GetFullText() const
{
    const std::string trace = m_trace.ToText();
    return trace.empty() ? m_marked_text : m_marked_text + "\n" + trace;
}

pthread_t exc_base_t::GetThreadId(const std::exception& exception)
{
    const auto* const ours = dynamic_cast<const exc_base_t*>(&exception);
    return ours != nullptr ? ours->m_thread_id : 0;
}

void exc_base_t::AddEntry(exc_entry_t entry)
{
    // The texts get their room first, so that lack of memory changes nothing.
    const std::size_t more = kMostAround + entry.text.size();
    m_marked_text.reserve(m_marked_text.size() + more);
    m_plain_text.reserve(m_plain_text.size() + more);
    m_entries.push_back(std::move(entry));
    AppendToTexts(m_entries.back(), m_entries.size() == 1, m_marked_text, m_plain_text);
}

// Changes all or, out of memory, nothing.
void exc_base_t::SetEntries(std::vector<exc_entry_t> entries)
{
    std::string marked_text;
    std::string plain_text;
    for (const exc_entry_t& entry : entries)
        AppendToTexts(entry, &entry == &entries.front(), marked_text, plain_text);
    m_entries.swap(entries);
    m_marked_text.swap(marked_text);
    m_plain_text.swap(plain_text);
}

} // namespace exc
