#pragma once

// A failed system call. The first message line is the system's text for the errno value
// (util::ErrnoText), the second the message, if there is one:
//
//   const int error = errno;
//   throw posix::errno_exc_t("Failed to open file [%1].", path, error);
//
//   No such file or directory
//   Failed to open file [/etc/x].
//
// The errno value always comes last. Take it into a local right after the call: forming an argument may
// change errno.

#include <string_view>

#include "nelvo/core/exc/exc_base.h"

namespace posix
{

class errno_exc_t : public exc::exc_base_t
{
public:
    // The system's text and, behind it, the message as it is.
    explicit errno_exc_t(int error);
    errno_exc_t(const std::string& message, int error);

    // The message is converted by util::WideToMultibyteForExc, which may throw instead. Defined in
    // exc_wide.cpp, which stands above the conversions.
    errno_exc_t(const std::wstring& message, int error);

    // The message is the format with 1 to 3 arguments filled in (util::Format).
    template <class Arg1>
    errno_exc_t(std::string_view format, const Arg1& arg1, int error)
        : errno_exc_t(util::Format(format, arg1), error)
    {
    }
    template <class Arg1, class Arg2>
    errno_exc_t(std::string_view format, const Arg1& arg1, const Arg2& arg2, int error)
        : errno_exc_t(util::Format(format, arg1, arg2), error)
    {
    }
    template <class Arg1, class Arg2, class Arg3>
    errno_exc_t(std::string_view format, const Arg1& arg1, const Arg2& arg2, const Arg3& arg3, int error)
        : errno_exc_t(util::Format(format, arg1, arg2, arg3), error)
    {
    }

    // Throws an errno_exc_t. Clone is the base's and loses type and number; CloneErrno keeps them.
    // Kept: ErrnoExc.CloneIsAPlainBaseObject
    [[noreturn]] void Rethrow() const override;
    virtual boost::shared_ptr<errno_exc_t> CloneErrno() const;

    // The errno value.
    std::uint32_t GetErrorCode() const { return m_error_code; }

private:
    std::uint32_t m_error_code;
};

} // namespace posix
