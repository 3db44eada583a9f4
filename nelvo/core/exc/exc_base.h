#pragma once

// The root of the exception family. An exception carries message lines, the oldest first, that grow as it
// rises through its callers; the id of the thread that built it; and a trace of named properties and
// numbered events. what() is the lines joined by line feeds, with "--tr:" in front of each marked one.
//
// An exception belongs to one thread at a time. Clone and Rethrow carry one to another thread: a worker
// hands over a clone, the receiver calls Rethrow. The thread id stays that of the thread of origin.
//
// An exception crosses a process in a byte buffer: WriteTo writes lines and trace (docs/formats.md), ReadFrom
// takes them over.
//
// Nothing here throws but std::bad_alloc, Rethrow, Translate what its translator throws, ReadFrom what its
// reader throws, and WriteTo what its writer throws for a text of 4 GiB.

#include <cstdint>
#include <exception>
#include <map>
#include <pthread.h>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "nelvo/core/util/format.h"

class CBufReader;

namespace cnt
{
class CBufWriter;
}

// One message line.
struct exc_entry_t
{
    std::string text;
    bool marked; // shows in what() with the prefix "--tr:"
};

// What is attached to an exception.
struct exc_trace_t
{
    using event_t = std::pair<std::int32_t, std::string>; // code and info

    std::map<std::string, std::string> properties;
    std::vector<event_t> events; // in order of adding

    // Whether an event has this code, whatever its info.
    bool HasEvent(std::int32_t code) const;

    // Takes over what the other trace has: a property that is here already keeps its value, and all events
    // are appended.
    void Merge(const exc_trace_t& other);

    // A line "--tr:property:<key>:<value>" for each property in key order, then a line
    // "--tr:event:<code>:<info>" for each event, with line feeds between them. Empty for an empty trace.
    std::string ToText() const;
};

namespace exc
{

// Gives the new text for a message line.
class ITranslator
{
public:
    virtual ~ITranslator() = default;
    // What the line becomes; what this throws stops the translation.
    virtual std::string Translate(const std::string& text) = 0;
};

class exc_base_t : public std::exception
{
public:
    // Without lines, or with one that is not marked.
    exc_base_t();
    explicit exc_base_t(const std::string& message);

    // Without lines, then exc_base_t::ReadFrom. Defined in exc_buffer.cpp, as that is.
    explicit exc_base_t(CBufReader& reader);

    exc_base_t(const exc_base_t&) = default;
    exc_base_t(exc_base_t&&) noexcept = default;
    exc_base_t& operator=(const exc_base_t&) = default;
    exc_base_t& operator=(exc_base_t&&) noexcept = default;
    ~exc_base_t() override = default;

    // The lines joined by line feeds, with "--tr:" in front of each marked one. Holds until the lines change.
    const char* what() const noexcept override { return m_marked_text.c_str(); }

    // A copy in a class of the family: exc_base_t here and wherever a derived class does not say otherwise.
    virtual boost::shared_ptr<exc_base_t> Clone() const;

    // Throws a copy of the type that the class says, exc_base_t here.
    [[noreturn]] virtual void Rethrow() const;

    // Replace the lines and the trace by those in a buffer, and write them there. Of properties with the same
    // key the first stays. An event with a code other than 1 to 6 is dropped, with the warning "Unexpected
    // trace event: [<code>]. Info: <info>." in the process log, although AddEvent takes it and WriteTo writes
    // it. A read that fails (buf_reader.h) leaves the exception as it was. Defined in exc_buffer.cpp, which
    // stands above reader, writer and log.
    // Kept: ExcBaseEvents.OtherCodesAreDroppedWithAWarning
    //
    // The number of an errno_exc_t and the file of a file_locked_exc_t do not go through the buffer; reading
    // leaves those of this object.
    // Kept: ErrnoExcBuffer.ReadingLeavesTheNumber
    virtual void ReadFrom(CBufReader& reader);
    virtual void WriteTo(cnt::CBufWriter& writer) const;

    // Replaces the text of each message line by what the translator gives for it. If that throws, all lines
    // stay as they were.
    virtual void Translate(ITranslator& translator);

    // Append one line, or throw std::bad_alloc and leave all lines as they were. The plain form takes the
    // text as it is, without substitution.
    void AddMessage(std::string text);
    void AddMarkedMessage(std::string text);

    // The line is the format with 1 to 3 arguments filled in (util::Format).
    template <class... Args, std::enable_if_t<sizeof...(Args) != 0, int> = 0>
    void AddMessage(std::string_view format, const Args&... args)
    {
        static_assert(sizeof...(Args) <= 3, "a formatted line takes 1 to 3 arguments");
        AddMessage(util::Format(format, args...));
    }

    // Append an event to the trace, with empty info if none is given. Any code is taken here; codes other
    // than 1 to 6 do not survive the buffer form.
    void AddEvent(std::int32_t code);
    void AddEvent(std::int32_t code, std::string info);

    // The trace itself, to be read and added to.
    exc_trace_t& GetTrace() { return m_trace; }
    const exc_trace_t& GetTrace() const { return m_trace; }

    // The lines joined by line feeds, without prefixes.
    const std::string& GetPlainText() const { return m_plain_text; }

    // what() and, if the trace gives any text, a line feed and that text.
    std::string GetFullText() const;

    // pthread_self() of the thread that built the exception, or of which it is a copy.
    pthread_t GetThreadId() const { return m_thread_id; }

    // The same for any exception; 0 if it is none of the family.
    static pthread_t GetThreadId(const std::exception& exception);

private:
    void AddEntry(exc_entry_t entry);
    void SetEntries(std::vector<exc_entry_t> entries);

    std::vector<exc_entry_t> m_entries;
    std::string m_marked_text;
    std::string m_plain_text;
    exc_trace_t m_trace;
    pthread_t m_thread_id;
};

} // namespace exc
