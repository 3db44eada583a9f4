// Ids: their text, their bytes, and the two texts that the tool takes them from, the agent file and a line of
// dmidecode's output.

#include "nelvo/core/guid.h"

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/fuzz_target.h"
#include "tool/agent_id.h"

namespace
{

bool IsRead(const Guid& value)
{
    return Guid::Parse(value.ToString()) == value && Guid::Parse(value.ToWString()) == value;
}

// The text without its braces, in lower case; empty if it is no id.
std::string Canonical(std::string_view text)
{
    if (!text.empty() && text.front() == '{')
        text.remove_prefix(1);
    if (!text.empty() && text.back() == '}')
        text.remove_suffix(1);
    std::string id(text.substr(0, text.find('\0')));
    std::transform(id.begin(), id.end(), id.begin(),
                   [](char letter)
                   { return letter >= 'A' && letter <= 'F' ? letter + ('a' - 'A') : letter; });
    std::string shape = id;
    std::replace_if(
        shape.begin(), shape.end(),
        [](char letter) { return (letter >= '0' && letter <= '9') || (letter >= 'a' && letter <= 'f'); },
        '0');
    return shape == "00000000-0000-0000-0000-000000000000" ? id : std::string();
}

void TryText(std::string_view text)
{
    const Guid value = Guid::Parse(text);
    const std::string canonical = Canonical(text);
    fuzz::Require(canonical.empty() ? value.IsNull() : value.ToString() == "{" + canonical + "}");
    fuzz::Require(IsRead(value) && IsRead(SwapGuidByteOrder(value)));
    fuzz::Require(SwapGuidByteOrder(SwapGuidByteOrder(value)) == value && Guid(value.ToRecord()) == value);
    if (text.find('\0') == std::string_view::npos)
        fuzz::Reads([&] { fuzz::Require(Guid::Parse(fuzz::Widened(text)) == value); });
}

void TryBytes(const std::uint8_t* data, std::size_t size)
{
    Guid value;
    const bool is_read = fuzz::Reads([&] { value = Guid::FromBytes(data, size); });
    fuzz::Require(is_read == (size == Guid::kSize));
    if (!is_read)
        return;
    cnt::plain_array_t bytes;
    value.CopyTo(bytes);
    fuzz::Require(bytes == cnt::plain_array_t(reinterpret_cast<const char*>(data), size) && IsRead(value));
}

// One file in memory for all inputs.
std::string FileOf(std::string_view content)
{
    static const int file = ::memfd_create("agent file", 0);
    fuzz::Require(::ftruncate(file, 0) == 0 && ::lseek(file, 0, SEEK_SET) == 0);
    fuzz::Require(::write(file, content.data(), content.size()) == static_cast<ssize_t>(content.size()));
    return "/proc/self/fd/" + std::to_string(file);
}

std::string_view FirstWord(std::string_view text)
{
    constexpr std::string_view kSpace = " \t\n\v\f\r";
    text.remove_prefix(std::min(text.find_first_not_of(kSpace), text.size()));
    return text.substr(0, text.find_first_of(kSpace));
}

void TryFile(std::string_view content)
{
    const std::string path = FileOf(content);
    fuzz::Require(ReadFirstFileToken(path) == FirstWord(content));
    Guid id;
    fuzz::Require(LookUuidInFile(path.c_str(), id) == !Guid::Parse(FirstWord(content)).IsNull());
    fuzz::Require(id == Guid::Parse(FirstWord(content)));
}

// The value is what stands between the first colon and the next, which only the end may follow.
void TryDmidecodeLine(std::string_view line)
{
    const std::vector<std::string> pieces = fuzz::Pieces(line, ':');
    const bool has_value = pieces.size() == 2 || (pieces.size() == 3 && pieces.back().empty());
    const std::string value = ParseDmidecodeLine(std::string(line));
    fuzz::Require(value.empty() || has_value);
    if (!has_value)
        return;
    const auto is_blank = [](char letter)
    { return std::strchr(" \r\n\t", letter) != nullptr && letter != '\0'; };
    const std::string& piece = pieces[1];
    const std::size_t at = piece.find(value);
    fuzz::Require(at != std::string::npos);
    const std::string around = piece.substr(0, at) + piece.substr(at + value.size());
    fuzz::Require(std::all_of(around.begin(), around.end(), is_blank));
    fuzz::Require(value.empty() || (!is_blank(value.front()) && !is_blank(value.back())));
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    TryText(Text(data, size));
    Reads([&] { Guid::Parse(WideText(data, size)); });
    TryBytes(data, size);
    TryFile(Text(data, size));
    TryDmidecodeLine(Text(data, size));
}
