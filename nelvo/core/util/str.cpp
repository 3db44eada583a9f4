#include "nelvo/core/util/str.h"

#include "nelvo/core/util/wide.h"

namespace util
{

str_t::str_t(std::wstring_view text) : m_narrow(WideToUtf8(text)) {}

std::wstring str_t::wide() const { return Utf8ToWide(m_narrow); }

} // namespace util
