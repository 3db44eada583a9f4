// Names that are made of names: aged copies and archives, numbered logs, names without bad characters.

#include "nelvo/fs/file_aging.h"

#include "fuzz/fuzz_target.h"
#include "nelvo/core/util/text.h"
#include "nelvo/fs/file_utils.h"
#include "nelvo/logging/receiver/log_files.h"

namespace
{

const std::string kArchive = ".log.gz";
const std::string kLog = ".log";

// The path and the age that a name was made of, but for the case of the extension.
std::string WithoutAge(std::string name, const std::string& extension, int age, bool has_extension)
{
    const std::string number = std::to_string(age);
    const std::size_t tail = number.size() + (has_extension ? extension.size() : 0);
    fuzz::Require(name.size() > tail);
    const std::size_t at = name.size() - tail;
    fuzz::Require(name.compare(at, number.size(), number) == 0 && name[at - 1] == '.');
    fuzz::Require(!has_extension || name.compare(at + number.size(), std::string::npos, extension) == 0);
    return name.erase(has_extension ? at - 1 : at, number.size() + (has_extension ? 1 : 0));
}

void TryAge(const std::string& path, const std::string& extension, int age)
{
    const bool has_extension = util::EndsWithNoCase(path, extension);
    const std::string name = util::AgedFileName(path, extension, age);
    const std::string plain = WithoutAge(name, extension, age, has_extension);
    const std::string base = path.substr(0, path.size() - (has_extension ? extension.size() : 0));
    if (has_extension)
        fuzz::Require(plain == base + extension);
    else
        fuzz::Require(plain == (!path.empty() && path.back() == '.' ? path : path + "."));
    fuzz::Require(name != util::AgedFileName(path, extension, age + 1));
}

void TryAges(const std::string& path)
{
    for (const std::string& extension : {kArchive, kLog})
    {
        fuzz::Require(util::AgedFileName(path, extension, 0) == path);
        for (const int age : {1, 9, 10})
            TryAge(path, extension, age);
    }
}

// The number is in front of the ending, which each numbered name has unless the path ends in a dot.
void TryNumber(const std::string& path, const std::string& number)
{
    const std::string name = logging::receiver::numbered_log_name(path, number);
    const bool is_log = util::EndsWithNoCase(path, kLog);
    const bool ends_in_dot = !is_log && !path.empty() && path.back() == '.';
    const std::string base = is_log ? path.substr(0, path.size() - kLog.size()) : path;
    const std::string ending = is_log ? path.substr(base.size()) : ends_in_dot ? "" : kLog;
    fuzz::Require(name == base + (ends_in_dot ? "" : ".") + number + ending);
}

// The archive of a numbered log has the name of an old archive of the log.
void TryArchiveOfNumbered(const std::string& log)
{
    for (const int age : {1, 10, 999})
        fuzz::Require(util::AgedFileName(log + kLog + ".gz", kArchive, age) ==
                      logging::receiver::numbered_log_name(log + kLog, std::to_string(age)) + ".gz");
}

void TryReplaced(const std::string& name)
{
    const std::string replaced = util::ReplaceBadFileNameChars(name);
    fuzz::Require(replaced.size() == name.size());
    for (std::size_t i = 0; i != name.size(); ++i)
    {
        const bool is_bad = std::string_view("><|?*/\\:\"").find(name[i]) != std::string_view::npos;
        fuzz::Require(replaced[i] == (is_bad ? '_' : name[i]));
    }
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const std::string name(Text(data, size));
    TryAges(name);
    TryNumber(name, "1");
    TryNumber(name, "999");
    TryArchiveOfNumbered(name);
    TryReplaced(name);
}
