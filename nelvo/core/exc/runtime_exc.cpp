#include "nelvo/core/exc/runtime_exc.h"

#include <boost/make_shared.hpp>

namespace exc
{

boost::shared_ptr<exc_base_t> runtime_exc_t::Clone() const
{
    return boost::make_shared<runtime_exc_t>(*this);
}

void runtime_exc_t::Rethrow() const { throw runtime_exc_t(*this); }

} // namespace exc
