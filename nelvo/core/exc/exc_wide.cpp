// The wide constructors of the family: they convert, and conversions throw exceptions of the family.

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/wide.h"

exc::runtime_exc_t::runtime_exc_t(const std::wstring& message)
    : runtime_exc_t(util::WideToMultibyteForExc(message))
{
}

exc::runtime_exc_t::runtime_exc_t(const std::wstring& message, error_code_t code)
    : runtime_exc_t(util::WideToMultibyteForExc(message), code)
{
}

posix::errno_exc_t::errno_exc_t(const std::wstring& message, int error)
    : errno_exc_t(util::WideToMultibyteForExc(message), error)
{
}
