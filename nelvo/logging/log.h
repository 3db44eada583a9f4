#pragma once

// A log: what formats messages and hands each in one piece to its receiver. Code logs through a channel
// (log_channel.h); there is one process-wide log, which nearly every channel shares.
//
// Until a receiver is set, and after close, messages vanish. Any thread may log: one mutex covers the
// formatting and the receiver's write, so messages never interleave. It is recursive, so a receiver may
// log to its own log. Never wait for another thread from inside a receiver: it may be waiting to log.

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

#include <boost/shared_ptr.hpp>
#include <boost/thread/recursive_mutex.hpp>
#include <boost/thread/tss.hpp>

#include "nelvo/logging/format/line_format.h"
#include "nelvo/logging/receiver/log_file.h"

namespace logging
{

class log_t
{
public:
    using receiver_ptr_t = boost::shared_ptr<receiver::log_file_t>;
    using filter_ptr_t = boost::shared_ptr<format::line_filter_t>;
    using format_ptr_t = boost::shared_ptr<const format::line_format_t>;

    log_t() = default;
    // Without a receiver, messages go nowhere.
    explicit log_t(receiver_ptr_t receiver);
    log_t(const log_t&) = delete;
    log_t& operator=(const log_t&) = delete;

    // One message; severities and layout as line_format.h tells. Nothing is written without a format. Drops
    // every std::exception on the way, and with it the message: a failing disk does not stop the program.
    //
    // With the size check on, the size is looked at after every thousandth message; after a failed check,
    // again after the next one. A message that the check itself sends counts, but starts no further check.
    void write(std::int32_t severity, std::int32_t indent, const format_ptr_t& format, std::string_view text);

    // The old receiver closes when its last owner lets go.
    void set_receiver(const receiver_ptr_t& receiver);
    receiver_ptr_t get_receiver() const;

    // The filter gets the text of each line; null for none.
    void set_line_filter(const filter_ptr_t& filter);
    filter_ptr_t get_line_filter() const;

    // Off unless told otherwise.
    void set_size_check(bool on);

    // Rotates the receiver's file if it has grown too big; nothing without a receiver. What fails is thrown
    // (receiver/rotation.h).
    void check_size();

    // Whether mask of the channels hides its text.
    void set_mask_sensitive(bool on);
    bool is_mask_sensitive() const { return m_mask_sensitive.load(std::memory_order_relaxed); }

    // The line style, 0 the normal one.
    void set_mode(std::int32_t mode) { m_mode.store(mode, std::memory_order_relaxed); }
    std::int32_t get_mode() const { return m_mode.load(std::memory_order_relaxed); }

    // Nothing is written any more, for good. Leaves the receiver, so its file stays open.
    void close() { m_closed.store(true, std::memory_order_relaxed); }

    // The receiver's path. Throws exc::runtime_exc_t if there is no receiver.
    std::string get_log_path() const;

    // The calling thread's indent in this log, in steps. Never below 0.
    std::int32_t get_indent() const;
    void raise_indent();
    void lower_indent();

private:
    void WriteLines(std::int32_t severity, std::int32_t indent, const format::line_format_t& format,
                    std::string_view text);
    void CountMessage();

    // Defined above this floor, in receiver/log_size_check.cpp.
    static void ValidateSize(receiver::log_file_t& receiver);

    mutable boost::recursive_mutex m_mutex; // guards what is neither atomic nor per thread
    receiver_ptr_t m_receiver;
    boost::thread_specific_ptr<std::int32_t> m_indent; // null stands for 0
    std::atomic<std::int32_t> m_mode{0};
    std::int32_t m_lines_since_check = 0; // messages, in truth
    std::atomic<bool> m_closed{false};
    bool m_size_check = false;
    std::atomic<bool> m_mask_sensitive{false};
    filter_ptr_t m_line_filter;
    bool m_checking_size = false;
    std::string m_spare; // the memory of the last message, for the next
};

// The process log. Built by the first channel, before main. A receiver that is still set closes at exit,
// after the last channel; the log itself stays, silent.
boost::shared_ptr<log_t> GetProcessLog();

} // namespace logging
