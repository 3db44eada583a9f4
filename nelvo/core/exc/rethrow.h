#pragma once

// Adding context to a failure on its way out.
//
//   catch (std::exception& e)
//   {
//       exc::RethrowWithContext(false, util::Format("Cannot age file. File path: [%1].", path), e);
//   }

#include "nelvo/core/exc/exc_base.h"

namespace exc
{

// Adds the message as a last line, marked or not, and the trace (exc_trace_t::Merge) to the exception in
// flight, and rethrows it. Only inside a handler, and with the exception that the handler caught.
//
// An exception of the family is changed in place and keeps its dynamic type. Any other leaves as an
// exc::runtime_exc_t whose first line is its what() (no such line if that is null). A system error of
// Boost gives its code to that exception, and its first line is the system's text for the code.
[[noreturn]] void RethrowWithContext(bool marked, const std::string& message, std::exception& exception,
                                     const exc_trace_t& trace = {});

} // namespace exc
