#include "nelvo/logging/receiver/log_start.h"

#include <atomic>
#include <exception>
#include <iostream>

#include <boost/tokenizer.hpp>

#include "nelvo/core/util/log_name.h"
#include "nelvo/fs/file_utils.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/receiver/log_files.h"
#include "nelvo/logging/receiver/stdout_log.h"

namespace logging
{
namespace
{

std::atomic<bool> debug_flag{false};

void SetDebugFlag(bool on) { debug_flag.store(on, std::memory_order_relaxed); }

bool IsWithoutEffect(const std::string& word)
{
    return word == "flush" || word == "cout" || word == "cerr" || word.front() == '+' || word.front() == '-';
}

} // namespace

void start_log(const std::string& name, bool debug, bool mask_sensitive, bool size_check)
{
    SetDebugFlag(debug);
    std::vector<std::string> paths;
    if (!name.empty())
        paths.push_back(name);
    open_log(paths, mask_sensitive, size_check);
}

bool open_log(const std::vector<std::string>& paths, bool mask_sensitive, bool size_check)
{
    const auto receiver = paths.empty() ? receiver::create_stdout_log() : receiver::create_file_log(paths);
    if (!receiver)
        return false;
    const auto log = GetProcessLog();
    log->set_receiver(receiver);
    log->set_mask_sensitive(mask_sensitive);
    log->set_size_check(size_check);
    return true;
}

// A list of keywords alone gives false, although a "debug" in it has taken effect.
// Kept: LogParams.KeywordsAloneGiveFalse
bool parse_log_params(const std::string& params, std::vector<std::string>& paths)
{
    std::cout << "LOG: Parsing log parameters ..." << std::endl;
    bool has_path = false;
    for (const std::string& word : boost::tokenizer(params, boost::char_separator<char>(",")))
    {
        if (word == "debug")
            SetDebugFlag(true);
        else if (!IsWithoutEffect(word))
        {
            paths.push_back(util::UnpackLogName(word));
            has_path = true;
        }
    }
    return has_path;
}

void start_log_from_params(const std::string& params, bool mask_sensitive)
{
    std::vector<std::string> paths;
    if (parse_log_params(params, paths) && open_log(paths, mask_sensitive, false))
        std::cout << "LOG: " << get_log_file_path() << std::endl;
    else
        std::cout << "LOG: <error, logs disabled>" << std::endl;
}

void start_log_from_params_safe(const std::string& params, bool mask_sensitive)
try
{
    start_log_from_params(params, mask_sensitive);
}
catch (std::exception& e)
{
    // No blank behind the comma.
    // Kept: LogParams.SafeStartPrintsTheFailureRightBehindTheComma
    std::cout << "Unable to create log," << e.what() << std::endl;
}

// The old file is closed before it is deleted; a new one on the same path would find it locked. What the
// deletion throws passes, and the log stays without a receiver.
void reset_log()
{
    const std::string path = get_log_file_path();
    if (path.empty())
        return;
    const auto log = GetProcessLog();
    log->set_receiver({});
    util::RemoveFile(path);
    const auto receiver = receiver::reopen_file_log(path);
    if (receiver)
        log->set_receiver(receiver);
}

void close_log() { GetProcessLog()->close(); }

std::string get_log_file_path()
{
    const auto receiver = GetProcessLog()->get_receiver();
    return receiver ? receiver->get_path() : std::string();
}

bool is_debug_log() { return debug_flag.load(std::memory_order_relaxed); }

} // namespace logging
