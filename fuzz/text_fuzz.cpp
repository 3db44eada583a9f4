// What takes text apart and puts it together: quoted parts, lists, XML, the names of logs, paths, the
// prefixes of virtual ones and the volumes of others.

#include "nelvo/core/util/text.h"

#include "fuzz/fuzz_target.h"
#include "nelvo/core/util/log_name.h"
#include "nelvo/core/util/path_text.h"
#include "nelvo/core/util/quoted_split.h"
#include "nelvo/core/util/xml.h"
#include "nelvo/fs/free_space.h"
#include "nelvo/io/dev_registry.h"

namespace
{

using tokens_t = std::vector<std::string>;
using wide_tokens_t = std::vector<std::wstring>;

wide_tokens_t AllWidened(const tokens_t& tokens)
{
    wide_tokens_t wide;
    std::transform(tokens.begin(), tokens.end(), std::back_inserter(wide), fuzz::Widened);
    return wide;
}

tokens_t WithoutEmpty(tokens_t tokens)
{
    tokens.erase(std::remove(tokens.begin(), tokens.end(), std::string()), tokens.end());
    return tokens;
}

// Tokens that are quoted are split into the same ones.
void TryQuoted(const tokens_t& tokens)
{
    std::string quoted;
    for (const std::string& token : tokens)
        quoted += "'" + token + "' ";
    fuzz::Require(util::SplitQuoted(quoted) == tokens);
}

void TrySplitQuoted(std::string_view text)
{
    fuzz::Agree([&] { return AllWidened(util::SplitQuoted(text)); },
                [&] { return util::SplitQuoted(fuzz::Widened(text)); });
    if (text.find_first_of("'\"") != std::string_view::npos)
        return;
    TryQuoted(WithoutEmpty(fuzz::Pieces(text, '\n')));
    std::string blanks(text);
    std::replace(blanks.begin(), blanks.end(), '\t', ' ');
    fuzz::Require(util::SplitQuoted(text) == WithoutEmpty(fuzz::Pieces(blanks, ' ')));
}

void TrySplit(std::string_view text)
{
    tokens_t expected = fuzz::Pieces(text, ',');
    if (expected.back().empty())
        expected.pop_back();
    tokens_t tokens;
    util::Split(text, ",", tokens);
    fuzz::Require(tokens == expected);
    wide_tokens_t wide;
    util::Split(fuzz::Widened(text), L",", wide);
    fuzz::Require(wide == AllWidened(tokens));
    tokens.clear();
    util::Split(text, ",", tokens, false);
    fuzz::Require(tokens == WithoutEmpty(expected));
    fuzz::Require(util::ListText(wide, true) == fuzz::Widened(util::ListText(expected, true)));
}

// What is cut off is of the set, and what stays does not begin or end with it.
void TryTrim(std::string_view text)
{
    constexpr std::string_view kSet(" \t\r\n\0", 5);
    const std::string trimmed = util::Trim(text, kSet);
    const std::size_t begin = std::min(text.find_first_not_of(kSet), text.size());
    const std::size_t end = text.find_last_not_of(kSet) + 1;
    fuzz::Require(trimmed == text.substr(begin, end - std::min(begin, end)));
    fuzz::Require(util::TrimLeft(util::TrimRight(text, kSet), kSet) == trimmed);
    fuzz::Require(util::Trim(fuzz::Widened(text), fuzz::Widened(kSet)) == fuzz::Widened(trimmed));
}

// A text is found in itself, whole and in parts, wherever it is cut.
void TryFind(std::string_view text)
{
    const std::string_view head = text.substr(0, text.size() / 2);
    const std::string_view tail = text.substr(head.size());
    fuzz::Require(util::StartsWithNoCase(text, head) && util::EndsWithNoCase(text, tail));
    const std::ptrdiff_t found = util::FindNoCase(text, tail);
    fuzz::Require(found >= 0 && static_cast<std::size_t>(found) <= head.size());
    fuzz::Require(util::StartsWithNoCase(text.substr(static_cast<std::size_t>(found)), tail));
    if (fuzz::IsAscii(text))
        fuzz::Require(util::FindNoCase(fuzz::Widened(text), fuzz::Widened(tail)) == found);
    fuzz::Require(util::FindNoCase(text, tail, text.size() + 1) == -1);
}

// Escaping is done once and for all, and does not change what is meant. An & may begin what is escaped
// already, up to the next ";"; text without one comes back as it was.
template <class Text>
void TryXml(const Text& text)
{
    const auto escaped = util::EscapeXml(text);
    fuzz::Require(util::EscapeXml(escaped) == escaped);
    fuzz::Require(util::UnescapeXml(escaped) == util::UnescapeXml(text));
    fuzz::Require(std::none_of(
        escaped.begin(), escaped.end(),
        [](auto letter) { return letter == '<' || letter == '>' || letter == '"' || letter == '\''; }));
    if (text.find('&') == Text::npos)
        fuzz::Require(util::UnescapeXml(escaped) == text);
}

void TryLogName(std::string_view text)
{
    const std::string packed = util::PackLogName(text);
    fuzz::Require(packed.find_first_of(",-+@&{}'\"") == std::string::npos);
    fuzz::Require(util::UnpackLogName(packed) == text);
    std::string unpacked;
    if (fuzz::Reads([&] { unpacked = util::UnpackLogName(text); }))
        fuzz::Require(unpacked.size() <= text.size() && util::PackLogName(unpacked).size() >= text.size());
}

void TryPath(std::string_view path)
{
    const util::path_parts_t parts = util::SplitPath(path);
    const bool has_folder = path.find('/') != std::string_view::npos;
    fuzz::Require(util::JoinPath(parts.folder + (has_folder ? "/" : ""), parts.name) == path);
    fuzz::Require(parts.name.find('/') == std::string::npos);
    const util::wide_path_parts_t wide = util::SplitPath(fuzz::Widened(path));
    fuzz::Require(wide.folder == fuzz::Widened(parts.folder) && wide.name == fuzz::Widened(parts.name));

    const std::string name = util::FileName(path);
    const std::size_t last = util::FindLastSeparator(path);
    fuzz::Require(name == path.substr(last + 1) && name.find_first_of("/\\") == std::string::npos);
    fuzz::Require(util::FindLastSeparator(fuzz::Widened(path)) == last);
    fuzz::Require(util::IsRelativeName(path) ==
                  (last == std::string_view::npos && (path.empty() || path.front() != '.')));
    fuzz::Require(util::IsRelativeName(fuzz::Widened(path)) == util::IsRelativeName(path));
    fuzz::Require((util::PathSeparator(path) == '\\') == (path.find('\\') != std::string_view::npos));
}

// Virtual storage is found by what stands in front of its path.
void TryVirtualPath(const std::string& path)
{
    std::string virtual_path;
    const bool is_taken = fuzz::Reads([&] { virtual_path = io::MakeMemFsPath(path); });
    fuzz::Require(is_taken == util::IsRelativeName(path) && (!is_taken || virtual_path == "MemFs://" + path));
    io::dev_registry_t registry;
    fuzz::Require(fuzz::Reads([&] { registry.SetCloudAliasPath(path, "web"); }) ==
                  util::StartsWithNoCase(path, "clouddisk://"));
    fuzz::Require(fuzz::Reads([&] { registry.SetCloudAliasPath("CloudDisk://" + path, path); }));
    fuzz::Require(registry.FindPrefixPath("CloudDisk://" + path) == path);
}

// The volume is the beginning of the path, up to the separator behind the volume's name.
void TryVolume(const std::string& path)
{
    constexpr std::string_view kVolumes = "/vmfs/volumes/";
    std::string volume = "before";
    const bool is_vmfs = util::IsVmfsPath(path, volume);
    fuzz::Require(is_vmfs == util::StartsWithNoCase(path, kVolumes));
    const std::string name = is_vmfs ? path.substr(kVolumes.size()) : std::string();
    const std::string expected = path.substr(0, kVolumes.size()) + name.substr(0, name.find_first_of("/\\"));
    fuzz::Require(volume == (is_vmfs ? expected : "before"));
}

// Wide text of any value.
void TryWide(const std::wstring& text)
{
    TryXml(text);
    fuzz::Reads([&] { util::SplitQuoted(text); });
    fuzz::Reads([&] { util::UnpackLogName(text); });
    util::FindNoCase(text, text.substr(text.size() / 2));
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = Text(data, size);
    TrySplitQuoted(text);
    TrySplit(text);
    TryTrim(text);
    TryFind(text);
    TryXml(text);
    Require(Widened(util::EscapeXml(text)) == util::EscapeXml(Widened(text)));
    Require(Widened(util::UnescapeXml(text)) == util::UnescapeXml(Widened(text)));
    TryLogName(text);
    TryPath(text);
    TryVirtualPath(std::string(text));
    TryVolume(std::string(text));
    TryWide(WideText(data, size));
}
