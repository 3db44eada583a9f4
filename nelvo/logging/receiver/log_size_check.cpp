#include <mutex>
#include <utility>

#include "nelvo/logging/log.h"
#include "nelvo/logging/receiver/rotation.h"

namespace logging
{
namespace
{

// Tells messages from inside the check, also from one that was asked for, to start no other.
class check_guard_t
{
public:
    explicit check_guard_t(bool& checking) : m_checking(checking), m_before(std::exchange(checking, true)) {}
    ~check_guard_t() { m_checking = m_before; }
    check_guard_t(const check_guard_t&) = delete;
    check_guard_t& operator=(const check_guard_t&) = delete;

private:
    bool& m_checking;
    const bool m_before;
};

} // namespace

void log_t::check_size()
{
    const std::lock_guard<boost::recursive_mutex> lock(m_mutex);
    const check_guard_t guard(m_checking_size);
    const receiver_ptr_t receiver = m_receiver;
    if (receiver)
        receiver::validate_log_size(*receiver);
}

} // namespace logging
