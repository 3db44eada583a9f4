#include "nelvo/core/exc/rethrow.h"

#include <boost/system/system_error.hpp>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/errno_text.h"

namespace exc
{
namespace
{

runtime_exc_t Converted(const std::exception& exception)
{
    if (const auto* const system = dynamic_cast<const boost::system::system_error*>(&exception))
    {
        const int code = system->code().value();
        return runtime_exc_t(util::ErrnoText(code), error_code_t(code));
    }
    const char* const text = exception.what();
    return text != nullptr ? runtime_exc_t(text) : runtime_exc_t();
}

void AddContext(exc_base_t& exception, bool marked, const std::string& message, const exc_trace_t& trace)
{
    if (marked)
        exception.AddMarkedMessage(message);
    else
        exception.AddMessage(message);
    exception.GetTrace().Merge(trace);
}

runtime_exc_t WithContext(runtime_exc_t exception, bool marked, const std::string& message,
                          const exc_trace_t& trace)
{
    AddContext(exception, marked, message, trace);
    return exception;
}

} // namespace

void RethrowWithContext(bool marked, const std::string& message, std::exception& exception,
                        const exc_trace_t& trace)
{
    if (auto* const ours = dynamic_cast<exc_base_t*>(&exception))
    {
        AddContext(*ours, marked, message, trace);
        throw;
    }
    throw WithContext(Converted(exception), marked, message, trace);
}

} // namespace exc
