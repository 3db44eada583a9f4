#include "nelvo/core/exc/errno_exc.h"

#include <boost/make_shared.hpp>

#include "nelvo/core/util/errno_text.h"

namespace posix
{

errno_exc_t::errno_exc_t(int error)
    : exc_base_t(util::ErrnoText(error)), m_error_code(static_cast<std::uint32_t>(error))
{
}

errno_exc_t::errno_exc_t(const std::string& message, int error) : errno_exc_t(error) { AddMessage(message); }

void errno_exc_t::Rethrow() const { throw errno_exc_t(*this); }

boost::shared_ptr<errno_exc_t> errno_exc_t::CloneErrno() const
{
    return boost::make_shared<errno_exc_t>(*this);
}

} // namespace posix
