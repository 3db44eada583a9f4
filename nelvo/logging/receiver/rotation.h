#pragma once

// Rotation: when a log has grown to 15 MiB, its content moves to a gz archive, the file is emptied in place,
// and older archives age by one number. Eleven archives are kept: a.log.gz, the newest, and a.1.log.gz to
// a.10.log.gz.

namespace logging::receiver
{

class log_file_t;

// Rotates the log if its size exceeds 15728639 bytes. What fails leaves with the context "Unable to validate
// log size limit. Log path: [<path>].". Takes as long as compressing the log does; call it where no other
// thread writes to the log, under the log's lock or before the log has it.
void validate_log_size(log_file_t& receiver);

} // namespace logging::receiver
