#pragma once

// A failure that no system call reported, with a code for callers that tell failures apart (0 unless
// given).
//
//   throw exc::runtime_exc_t("Permission denied");
//   throw exc::runtime_exc_t("Failed to open file [%1].", path);
//   throw exc::runtime_exc_t("Out of range.", exc::error_code_t{34});
//
// A message or format that is given as a C string is not null; an argument may be ("<null>").

#include <type_traits>

#include "nelvo/core/exc/exc_base.h"

namespace exc
{

// A type of its own, so that a number to be filled into a message is never taken for the code.
enum class error_code_t : std::uint32_t
{
};

class runtime_exc_t : public exc_base_t
{
public:
    // Without lines, or with the message as it is.
    runtime_exc_t() = default;
    explicit runtime_exc_t(const std::string& message) : exc_base_t(message) {}
    runtime_exc_t(const std::string& message, error_code_t code)
        : exc_base_t(message), m_error_code(static_cast<std::uint32_t>(code))
    {
    }

    // The message is the format with 1 to 4 arguments filled in (util::Format).
    template <class Arg, class... Args, std::enable_if_t<!std::is_same_v<Arg, error_code_t>, int> = 0>
    runtime_exc_t(std::string_view format, const Arg& arg, const Args&... args)
        : exc_base_t(util::Format(format, arg, args...))
    {
        static_assert(sizeof...(Args) <= 3, "a message takes 1 to 4 arguments");
    }

    // Wide text is converted by util::WideToMultibyteForExc, a format after its arguments (1 to 4 of
    // them) are filled in. What that conversion throws is thrown instead of this exception.
    // Defined in exc_wide.cpp, which stands above the conversions.
    explicit runtime_exc_t(const std::wstring& message);
    runtime_exc_t(const std::wstring& message, error_code_t code);
    template <class Arg, class... Args, std::enable_if_t<!std::is_same_v<Arg, error_code_t>, int> = 0>
    runtime_exc_t(std::wstring_view format, const Arg& arg, const Args&... args)
        : runtime_exc_t(util::Format(format, arg, args...))
    {
        static_assert(sizeof...(Args) <= 3, "a message takes 1 to 4 arguments");
    }

    // Copies keep this type and the code.
    boost::shared_ptr<exc_base_t> Clone() const override;
    [[noreturn]] void Rethrow() const override;

    // The base's, then the code.
    void ReadFrom(CBufReader& reader) override;
    void WriteTo(cnt::CBufWriter& writer) const override;

    // 0 unless given. It goes through the buffer with the exception.
    std::uint32_t GetErrorCode() const { return m_error_code; }
    void SetErrorCode(std::uint32_t code) { m_error_code = code; }

private:
    std::uint32_t m_error_code = 0;
};

} // namespace exc
