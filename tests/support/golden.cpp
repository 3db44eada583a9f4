#include "tests/support/golden.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <fstream>
#include <stdexcept>

namespace
{

template <class Bytes>
Bytes UnhexAs(const std::string& digits)
{
    std::string plain;
    for (const char letter : digits)
        if (std::isspace(static_cast<unsigned char>(letter)) == 0)
            plain += letter;
    if (plain.size() % 2 != 0)
        throw std::invalid_argument("odd number of digits: " + digits);
    Bytes bytes;
    for (std::size_t i = 0; i < plain.size(); i += 2)
        bytes += static_cast<char>(std::stoi(plain.substr(i, 2), nullptr, 16));
    return bytes;
}

template <class List>
List FieldsAs(const std::string& name)
{
    const std::string path = NELVO_TEST_DATA "/" + name + ".hex";
    std::ifstream file(path);
    if (!file)
        throw std::invalid_argument("cannot read " + path);
    List fields;
    for (std::string line; std::getline(file, line);)
    {
        line.erase(std::min(line.find('#'), line.size()));
        const std::size_t colon = line.find(':');
        if (colon != std::string::npos)
            fields.push_back(UnhexAs<typename List::value_type>(line.substr(colon + 1)));
    }
    return fields;
}

template <class List>
typename List::value_type Joined(const List& fields)
{
    typename List::value_type bytes;
    for (const auto& field : fields)
        bytes += field;
    return bytes;
}

} // namespace

std::string Unhex(const std::string& digits) { return UnhexAs<std::string>(digits); }

std::string Hex(std::string_view bytes)
{
    static const char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char letter : bytes)
    {
        const auto byte = static_cast<unsigned char>(letter);
        if (!text.empty())
            text += ' ';
        text += {kDigits[byte / 16], kDigits[byte % 16]};
    }
    return text;
}

std::vector<std::string> GoldenFields(const std::string& name)
{
    return FieldsAs<std::vector<std::string>>(name);
}

std::string Golden(const std::string& name) { return Joined(GoldenFields(name)); }

wiped_list_t SecretFields(const std::string& name) { return FieldsAs<wiped_list_t>(name); }

wiped_bytes_t SecretGolden(const std::string& name) { return Joined(SecretFields(name)); }

std::vector<std::string> Prefixes(const std::string& bytes)
{
    std::vector<std::string> prefixes;
    for (std::size_t size = 0; size < bytes.size(); ++size)
        prefixes.push_back(bytes.substr(0, size));
    return prefixes;
}

std::vector<std::string> BitFlips(const std::string& bytes)
{
    std::vector<std::string> flips;
    for (std::size_t bit = 0; bit < bytes.size() * 8; ++bit)
    {
        flips.push_back(bytes);
        flips.back()[bit / 8] = static_cast<char>(flips.back()[bit / 8] ^ (1 << bit % 8));
    }
    return flips;
}
