#include "nelvo/logging/receiver/log_files.h"

#include <cerrno>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

#include <boost/filesystem/path.hpp>
#include <boost/make_shared.hpp>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/file_locked_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/text.h"
#include "nelvo/fs/file_utils.h"
#include "nelvo/logging/receiver/posix_log_file.h"
#include "nelvo/logging/receiver/rotation.h"

namespace logging::receiver
{
namespace
{

using receiver_ptr_t = boost::shared_ptr<log_file_t>;

constexpr int kNames = 1000;
const char kFallbackFolder[] = "/tmp/NelvoBackup/";

bool PassesCreateTest(const std::string& path)
try
{
    create_test(path);
    return true;
}
catch (std::exception&)
{
    return false;
}

std::string PathOrFallback(const std::string& path)
try
{
    create_test(path);
    return path;
}
catch (std::exception&)
{
    return fallback_log_path(path);
}

// A log that is too big and cannot be rotated is no log at all: the program goes on without one.
// Kept: LogFiles.BigLogThatCannotBeRotatedIsNoLog
receiver_ptr_t OpenAndRotate(const std::string& path)
{
    std::string real_path;
    receiver_ptr_t receiver = open_unlocked_log_file(path, real_path);
    validate_log_size(*receiver);
    return receiver;
}

receiver_ptr_t PrintFailure(const std::string& path, const std::exception& exception)
{
    std::cout << util::Format("Failed to initialize log [%1].", path) << std::endl
              << exception.what() << std::endl;
    return {};
}

} // namespace

receiver_ptr_t create_file_log(const std::vector<std::string>& paths)
try
{
    return OpenAndRotate(pick_log_path(paths));
}
catch (std::exception& e)
{
    return PrintFailure(paths.empty() ? "n/a" : paths.front(), e);
}

receiver_ptr_t reopen_file_log(const std::string& path)
try
{
    return OpenAndRotate(PathOrFallback(path));
}
catch (std::exception& e)
{
    return PrintFailure(path, e);
}

// The failures of the paths are over when the fallback is asked for, so a first path without a file name
// finds nothing to rethrow, and the process ends.
// Kept: LogFiles.PathsWithoutAFileNameEndTheProcess
std::string pick_log_path(const std::vector<std::string>& paths)
{
    if (paths.empty())
        throw exc::runtime_exc_t("Log paths list is empty.");
    for (const std::string& path : paths)
    {
        if (PassesCreateTest(path))
            return path;
    }
    return fallback_log_path(paths.front());
}

void create_test(const std::string& path)
{
    util::CreateParentFolders(path);
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT, 0664);
    const int error = errno;
    if (descriptor == -1)
        throw posix::errno_exc_t("Cannot create a log file.", error);
    ::close(descriptor);
}

std::string fallback_log_path(const std::string& path)
{
    const std::string name = boost::filesystem::path(path).filename().string();
    if (name.empty())
        throw;
    std::string fallback = kFallbackFolder + name;
    util::CreateParentFolders(fallback);
    return fallback;
}

receiver_ptr_t open_unlocked_log_file(const std::string& path, std::string& real_path)
{
    for (int index = 0; index != kNames; ++index)
    {
        const std::string name = index == 0 ? path : numbered_log_name(path, std::to_string(index));
        try
        {
            receiver_ptr_t receiver = boost::make_shared<posix::posix_log_file_t>(name);
            real_path = name;
            return receiver;
        }
        catch (exc::file_locked_exc_t&)
        {
            // The next name's turn.
        }
    }
    throw exc::runtime_exc_t("All log files are locked.");
}

std::string numbered_log_name(const std::string& path, const std::string& suffix)
{
    const std::string extension = ".log";
    if (util::EndsWithNoCase(path, extension))
    {
        const std::size_t base_size = path.size() - extension.size();
        return path.substr(0, base_size) + "." + suffix + path.substr(base_size);
    }
    if (!path.empty() && path.back() == '.')
        return path + suffix;
    return path + "." + suffix + extension;
}

} // namespace logging::receiver
