// The buffer form of the family: it reads, writes and logs, and what does so throws exceptions of the family.
//
// All that is read goes into locals first, so that a failure changes nothing. A count is never believed: each
// item is read before there is memory for the next.

#include <utility>

#include "nelvo/core/cnt/buf_reader.h"
#include "nelvo/core/cnt/buf_writer.h"
#include "nelvo/core/exc/exc_base.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/numeric_cast.h"
#include "nelvo/logging/channels.h"

namespace
{

constexpr std::int32_t kFirstEvent = 1;
constexpr std::int32_t kLastEvent = 6;

std::vector<exc_entry_t> ReadEntries(CBufReader& reader)
{
    std::vector<exc_entry_t> entries;
    for (std::int32_t count = reader.ReadInt32(); count > 0; --count)
    {
        std::string text = reader.ReadString();
        entries.push_back({std::move(text), reader.ReadBool()});
    }
    return entries;
}

std::map<std::string, std::string> ReadProperties(CBufReader& reader)
{
    std::map<std::string, std::string> properties;
    for (std::int32_t count = reader.ReadInt32(); count > 0; --count)
    {
        std::string key = reader.ReadString();
        properties.emplace(std::move(key), reader.ReadString());
    }
    return properties;
}

std::vector<exc_trace_t::event_t> ReadEvents(CBufReader& reader)
{
    std::vector<exc_trace_t::event_t> events;
    for (std::int32_t count = reader.ReadInt32(); count > 0; --count)
    {
        const std::int32_t code = reader.ReadInt32();
        std::string info = reader.ReadString();
        if (code >= kFirstEvent && code <= kLastEvent)
            events.emplace_back(code, std::move(info));
        else
            logging::channels::default_log.warning("Unexpected trace event: [%1]. Info: %2.", code, info);
    }
    return events;
}

template <class Container>
void WriteCount(cnt::CBufWriter& writer, const Container& items)
{
    writer.WriteInt32(util::NumericCast<std::int32_t>(items.size()));
}

} // namespace

exc::exc_base_t::exc_base_t(CBufReader& reader) : exc_base_t() { exc_base_t::ReadFrom(reader); }

void exc::exc_base_t::ReadFrom(CBufReader& reader)
{
    std::vector<exc_entry_t> entries = ReadEntries(reader);
    exc_trace_t trace;
    trace.properties = ReadProperties(reader);
    trace.events = ReadEvents(reader);
    SetEntries(std::move(entries));
    m_trace = std::move(trace);
}

void exc::exc_base_t::WriteTo(cnt::CBufWriter& writer) const
{
    WriteCount(writer, m_entries);
    for (const exc_entry_t& entry : m_entries)
    {
        writer.WriteString(entry.text);
        writer.WriteBool(entry.marked);
    }
    WriteCount(writer, m_trace.properties);
    for (const auto& [key, value] : m_trace.properties)
    {
        writer.WriteString(key);
        writer.WriteString(value);
    }
    WriteCount(writer, m_trace.events);
    for (const auto& [code, info] : m_trace.events)
    {
        writer.WriteInt32(code);
        writer.WriteString(info);
    }
}

void exc::runtime_exc_t::ReadFrom(CBufReader& reader)
{
    runtime_exc_t read(*this);
    read.exc_base_t::ReadFrom(reader);
    read.m_error_code = reader.ReadUint32();
    *this = std::move(read);
}

void exc::runtime_exc_t::WriteTo(cnt::CBufWriter& writer) const
{
    exc_base_t::WriteTo(writer);
    writer.WriteInt32(m_error_code);
}
