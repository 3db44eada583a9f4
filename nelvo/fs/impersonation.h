#pragma once

// The place where a session of another user stands around file operations. On this platform there are no
// such sessions: holding one does nothing.

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

namespace util
{

// One byte, without any content.
class stub_impersonation_session_t
{
};

// Holds a session.
using stub_impersonation_session_ptr_t = boost::shared_ptr<stub_impersonation_session_t>;

// The session lasts as long as the handle.
inline stub_impersonation_session_ptr_t HoldImpersonation()
{
    return boost::make_shared<stub_impersonation_session_t>();
}

} // namespace util
