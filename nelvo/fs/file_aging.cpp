#include "nelvo/fs/file_aging.h"

#include <exception>
#include <string>

#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/util/format.h"
#include "nelvo/core/util/text.h"
#include "nelvo/fs/file_utils.h"

namespace util
{

std::string AgedFileName(const std::string& path, const std::string& extension, int age)
{
    if (age == 0)
        return path;
    const std::string number = std::to_string(age);
    if (EndsWithNoCase(path, extension))
        return path.substr(0, path.size() - extension.size()) + "." + number + extension;
    const bool ends_in_dot = !path.empty() && path.back() == '.';
    return path + (ends_in_dot ? "" : ".") + number;
}

void AgeFile(int limit, const std::string& path, const std::string& extension)
try
{
    for (int age = limit; age >= 0; --age)
    {
        const std::string name = AgedFileName(path, extension, age);
        if (!FileExists(name))
            continue;
        if (age == limit)
            RemoveFile(name);
        else
            RenameFile(name, AgedFileName(path, extension, age + 1));
    }
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false,
                            Format("Cannot age file. File path: [%1]. Extension: [%2]. Ages limit: [%3].",
                                   path, extension, limit),
                            e);
}

} // namespace util
