#include "nelvo/core/util/xml.h"

#include <algorithm>
#include <array>

// What follows an & is looked through once, up to the first character that can stand in no entity. If that
// is not a ";", then no & before it begins an entity either, and the place is remembered: a run of & would
// otherwise be looked through from each of them.

namespace util
{
namespace
{

struct entity_t
{
    char character;
    std::string_view name;
};

constexpr std::array<entity_t, 5> kEntities = {
    {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&apos;"}}};

template <class Char>
bool IsSpecial(Char c)
{
    return c == Char('&') || c == Char('<') || c == Char('>') || c == Char('"') || c == Char('\'');
}

// An & is among them, so "&a&b;" passes as one entity, and "&;" as an empty one.
// Kept: EscapeXml.AnAmpersandMayStandInsideAnEntity
template <class Char>
bool IsInside(Char c)
{
    return (c >= Char('a') && c <= Char('z')) || (c >= Char('A') && c <= Char('Z')) ||
           (c >= Char('0') && c <= Char('9')) || c == Char('&');
}

template <class Char>
void AppendEntity(std::basic_string<Char>& result, Char character)
{
    const auto* const entity =
        std::find_if(kEntities.begin(), kEntities.end(),
                     [character](const entity_t& e) { return Char(e.character) == character; });
    result.append(entity->name.begin(), entity->name.end());
}

template <class Char>
std::basic_string<Char> Escaped(std::basic_string_view<Char> text)
{
    std::basic_string<Char> result;
    result.reserve(text.size());
    const Char* const end = text.data() + text.size();
    const Char* no_entity_before = text.data();
    for (const Char* at = text.data();;)
    {
        const Char* const special = std::find_if(at, end, IsSpecial<Char>);
        result.append(at, special);
        if (special == end)
            return result;

        at = special + 1;
        if (*special == Char('&') && special >= no_entity_before)
        {
            const Char* const stop = std::find_if_not(at, end, IsInside<Char>);
            if (stop != end && *stop == Char(';'))
            {
                at = stop + 1;
                result.append(special, at);
                continue;
            }
            no_entity_before = stop;
        }
        AppendEntity(result, *special);
    }
}

template <class Char>
const entity_t* EntityAt(std::basic_string_view<Char> text)
{
    const auto stands_here = [text](const entity_t& entity)
    {
        const std::string_view name = entity.name;
        return text.size() >= name.size() && std::equal(name.begin(), name.end(), text.begin());
    };
    const auto* const found = std::find_if(kEntities.begin(), kEntities.end(), stands_here);
    return found != kEntities.end() ? found : nullptr;
}

template <class Char>
std::basic_string<Char> Unescaped(std::basic_string_view<Char> text)
{
    std::basic_string<Char> result;
    result.reserve(text.size());
    for (;;)
    {
        const std::size_t mark = std::min(text.find(Char('&')), text.size());
        result.append(text, 0, mark);
        text.remove_prefix(mark);
        if (text.empty())
            return result;

        const entity_t* const entity = EntityAt(text);
        result += entity != nullptr ? Char(entity->character) : Char('&');
        text.remove_prefix(entity != nullptr ? entity->name.size() : 1);
    }
}

} // namespace

std::string EscapeXml(std::string_view text) { return Escaped(text); }
std::wstring EscapeXml(std::wstring_view text) { return Escaped(text); }

std::string UnescapeXml(std::string_view text) { return Unescaped(text); }
std::wstring UnescapeXml(std::wstring_view text) { return Unescaped(text); }

} // namespace util
