#include "nelvo/io/cout_multiplexor.h"

#include <algorithm>
#include <exception>
#include <iostream>

#include <boost/thread/lock_guard.hpp>

#include "nelvo/logging/channels.h"

namespace io
{
namespace
{

using lock_t = boost::lock_guard<boost::recursive_mutex>;

const logging::log_channel_t& Log() { return logging::channels::cli; }

std::uint64_t AddressOf(const cout_target_t* target) { return reinterpret_cast<std::uintptr_t>(target); }

} // namespace

void CCoutMultiplexor::add_target(const boost::shared_ptr<cout_target_t>& target)
{
    const lock_t lock(m_mutex);
    Log().info("Registering stdin/stdout redirector: '%1'.", AddressOf(target.get()));
    m_targets.push_back(target);
}

void CCoutMultiplexor::remove_target(const cout_target_t* target)
{
    const lock_t lock(m_mutex);
    Log().info("Removing stdin/stdout redirector: '%1'.", AddressOf(target));
    const auto found = std::find_if(m_targets.begin(), m_targets.end(),
                                    [target](const auto& entry) { return entry.get() == target; });
    if (found != m_targets.end())
        m_targets.erase(found);
}

void CCoutMultiplexor::clear_targets()
{
    const lock_t lock(m_mutex);
    if (m_targets.empty())
        return;
    Log().info("Clearing collection of cout multiplexors.");
    m_targets.clear();
}

void CCoutMultiplexor::write_error(const std::string& message)
{
    const lock_t lock(m_mutex);
    const targets_t targets = m_targets;
    if (targets.empty())
        std::cerr << message << std::endl;
    for (const auto& target : targets)
    {
        try
        {
            target->write_text("--err:\n");
            target->write_text(message);
            target->write_text(":err--\n");
        }
        catch (std::exception& e)
        {
            Log().warning("Cannot write error message [%1] over redirector. Error: [%2]", message, e.what());
        }
    }
}

void CCoutMultiplexor::send_text(const std::string& text, std::int32_t kind)
{
    const lock_t lock(m_mutex);
    if (m_targets.empty())
        return;
    const targets_t targets = m_targets;
    const std::string wrapped = wrap_notification(text, kind);
    for (const auto& target : targets)
    {
        try
        {
            target->write_text(wrapped);
        }
        catch (std::exception& e)
        {
            Log().warning("Cannot write message message [%1] over redirector. Error: [%2]", text, e.what());
        }
    }
}

void CCoutMultiplexor::send_named_value(const std::string& name, const std::string& value)
{
    send_text("--named_wn:" + name + ":" + value, kNotification);
}

std::string CCoutMultiplexor::wrap_notification(const std::string& text, std::int32_t kind)
{
    return kind == kNotification ? "--asyncNtf:" + text : text;
}

} // namespace io
