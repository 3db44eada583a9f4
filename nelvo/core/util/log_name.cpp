#include "nelvo/core/util/log_name.h"

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/wide.h"

namespace util
{
namespace
{

constexpr char kEscape = '_';

// Found at the same place in both, a character of the first stands behind the escape as that of the second.
constexpr std::string_view kPlain = ",-+@&{}'\"_";
constexpr std::string_view kPacked = "ABCDEFGHI_";

} // namespace

std::string PackLogName(std::string_view name)
{
    std::string packed;
    packed.reserve(name.size());
    for (const char c : name)
    {
        const std::size_t place = kPlain.find(c);
        if (place == kPlain.npos)
            packed += c;
        else
            (packed += kEscape) += kPacked[place];
    }
    return packed;
}

std::string UnpackLogName(std::string_view packed)
{
    std::string name;
    name.reserve(packed.size());
    for (auto at = packed.begin(); at != packed.end(); ++at)
    {
        if (*at != kEscape)
        {
            name += *at;
            continue;
        }
        if (++at == packed.end())
            throw exc::runtime_exc_t("Failed to unpack log name string: Unexpected end of sequence");
        const std::size_t place = kPacked.find(*at);
        if (place == kPacked.npos)
            throw exc::runtime_exc_t("Failed to unpack log name string: Incorrect sequence: [%1].", *at);
        name += kPlain[place];
    }
    return name;
}

std::wstring PackLogName(std::wstring_view name)
{
    return MultibyteToWide(PackLogName(WideToMultibyte(name)));
}

std::wstring UnpackLogName(std::wstring_view packed)
{
    return MultibyteToWide(UnpackLogName(WideToMultibyte(packed)));
}

} // namespace util
