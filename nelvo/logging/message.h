#pragma once

// The text of a message as it is called for: a text, or a pattern with 1 to 5 arguments, narrow or wide.
// Built in the argument list of the call that takes it, and refers to what stands there.
//
// Text and pattern must not be null C strings. A text without arguments is taken as it is. A pattern is
// filled in as util::Format does; of a wide one, the pattern and each argument become UTF-8 first.

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

#include "nelvo/core/util/format.h"

namespace logging
{

class message_t
{
public:
    using args_t = std::initializer_list<util::text_arg_t>;
    using wide_args_t = std::initializer_list<util::wide_text_arg_t>;

    static constexpr std::size_t kMostArgs = 5;

    // Refers to the pattern and the arguments; without any, the pattern is the text.
    message_t(std::string_view pattern, args_t args);
    message_t(std::wstring_view pattern, wide_args_t args);

    // Throws exc::runtime_exc_t if wide text has no UTF-8 form.
    std::string form() const;

    // The same without a copy where none is needed: the result stands in the caller's text or in storage.
    std::string_view form_in(std::string& storage) const;

private:
    bool m_wide;
    std::string_view m_pattern;
    args_t m_args;
    std::wstring_view m_wide_pattern;
    wide_args_t m_wide_args;
};

} // namespace logging
