#include "nelvo/logging/log.h"
#include "nelvo/logging/receiver/rotation.h"

void logging::log_t::ValidateSize(receiver::log_file_t& receiver) { receiver::validate_log_size(receiver); }
