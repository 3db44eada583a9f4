#pragma once

// The string of paths: one text that can be given and read in both forms. It keeps the narrow form, which
// for a path is the bytes as they were given and need be no valid UTF-8. The wide form is made anew at each
// call, so that a text without one is still good for everything but that call, and so that reading is safe
// from several threads.
//
// Made implicitly, so that an operation on a path takes narrow and wide text alike. A C string must not be
// null.
//
//   void Open(const util::str_t& path);
//   Open("/etc/hosts");  Open(L"/etc/hosts");  Open(some_std_string);

#include <string>
#include <string_view>
#include <utility>

namespace util
{

// NOLINTBEGIN(google-explicit-constructor)
class str_t
{
public:
    // Takes the bytes as they are.
    str_t() = default;
    str_t(std::string text) : m_narrow(std::move(text)) {}
    str_t(std::string_view text) : m_narrow(text) {}
    str_t(const char* text) : m_narrow(text) {}

    // Converted at once; throw what WideToUtf8 throws.
    str_t(std::wstring_view text);
    str_t(const std::wstring& text) : str_t(std::wstring_view(text)) {}
    str_t(const wchar_t* text) : str_t(std::wstring_view(text)) {}

    // The bytes as they are kept.
    const std::string& narrow() const { return m_narrow; }

    // Throws what Utf8ToWide throws.
    std::wstring wide() const;

    // Whether there is no byte.
    bool empty() const { return m_narrow.empty(); }

    // Byte by byte.
    friend bool operator==(const str_t& left, const str_t& right) { return left.m_narrow == right.m_narrow; }
    friend bool operator!=(const str_t& left, const str_t& right) { return left.m_narrow != right.m_narrow; }
    friend bool operator<(const str_t& left, const str_t& right) { return left.m_narrow < right.m_narrow; }

private:
    std::string m_narrow;
};
// NOLINTEND(google-explicit-constructor)

} // namespace util
