#pragma once

// Sends text to all who listen to this process's output. The common library context has one. Any thread may
// use it at any time: a recursive mutex is held for each whole send, and while it logs.
//
// An error is framed, "--err:" LF, the message, ":err--" LF; a notification has "--asyncNtf:" in front; any
// other text goes as it is. No line end is added.

#include <cstdint>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>
#include <boost/thread/recursive_mutex.hpp>

#include "nelvo/io/io_dev.h"

namespace io
{

// A listener: a device that also takes text. A std::exception from there is logged and goes no further. While
// it takes text it may add and remove targets, itself too: the send goes to those that were there before.
class cout_target_t : public io_dev_t
{
public:
    // A text, or one of the three pieces of an error.
    virtual void write_text(const std::string& text) = 0;
};

class CCoutMultiplexor
{
public:
    static constexpr std::int32_t kNotification = 2;

    // Each logs on "cli" with the target's address in decimal. A target, which must not be null, gets all
    // texts twice if it is added twice; remove_target takes away the first of them, and logs also if there is
    // none.
    //
    // Kept: CoutMultiplexor.RemovalOfAStrangerIsLogged
    void add_target(const boost::shared_ptr<cout_target_t>& target);
    void remove_target(const cout_target_t* target);

    // Logs unless there are no targets.
    void clear_targets();

    // In three writes to each target; the message and a line end to std::cerr, without the frame, if there is
    // no target.
    void write_error(const std::string& message);

    // Nothing happens without a target. One that fails is logged as a "message message" that cannot be
    // written.
    //
    // Kept: CoutMultiplexor.FailedTextIsReportedWithADoubledWord
    void send_text(const std::string& text, std::int32_t kind);

    // The notification "--named_wn:<name>:<value>".
    void send_named_value(const std::string& name, const std::string& value);

    // The text as send_text sends it: with "--asyncNtf:" in front for kNotification.
    static std::string wrap_notification(const std::string& text, std::int32_t kind);

private:
    using targets_t = std::vector<boost::shared_ptr<cout_target_t>>;

    boost::recursive_mutex m_mutex; // guards the targets
    targets_t m_targets;            // in the order of registration
};

} // namespace io
