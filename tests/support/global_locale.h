#pragma once

// The classic locale with another facet, for a test that asks whether the global locale of C++ matters:
//
//   const global_locale_tt<commas_t> locale;

#include <locale>

// Is the global locale as long as this lives, and then gives it back.
template <class Facet>
class global_locale_tt
{
public:
    global_locale_tt() : m_before(std::locale::global(std::locale(std::locale::classic(), new Facet))) {}
    ~global_locale_tt() { std::locale::global(m_before); }
    global_locale_tt(const global_locale_tt&) = delete;
    global_locale_tt& operator=(const global_locale_tt&) = delete;

private:
    std::locale m_before;
};
