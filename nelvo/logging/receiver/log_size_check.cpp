#include "nelvo/logging/log.h"

namespace logging
{

// No receiver has a file yet, so nothing grows.
void log_t::check_size() {}

} // namespace logging
