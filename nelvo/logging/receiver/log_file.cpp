#include "nelvo/logging/receiver/log_file.h"

namespace logging::receiver
{

std::string log_file_t::get_path() const { return m_path; }

std::string log_file_t::get_eol() const { return m_eol; }

} // namespace logging::receiver
