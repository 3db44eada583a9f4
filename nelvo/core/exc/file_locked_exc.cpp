#include "nelvo/core/exc/file_locked_exc.h"

#include <boost/make_shared.hpp>

namespace exc
{

file_locked_exc_t::file_locked_exc_t(const std::string& file)
    : exc_base_t(util::Format("File [%1] is locked.", file)), m_file(file)
{
}

boost::shared_ptr<exc_base_t> file_locked_exc_t::Clone() const
{
    return boost::make_shared<file_locked_exc_t>(*this);
}

} // namespace exc
