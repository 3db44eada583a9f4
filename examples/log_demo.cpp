// Channels, severities, progress scopes, and a log that goes into an archive when it has grown too big:
//
//   log_demo FOLDER
//
// leaves FOLDER/demo.log with the newest lines, and FOLDER/demo.log.gz with those before them. What a line is
// made of tells docs/log.md.

#include <exception>
#include <iostream>
#include <string>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/logging/channels.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/progress_scope.h"
#include "nelvo/logging/receiver/log_start.h"
#include "nelvo/posix/posix_file.h"

namespace
{

constexpr stream_size_t kGreatestSize = 15728640; // of a log

// A program's own channel; its tag fills a column of each line. Built before main, where running out of
// memory ends the process.
const logging::log_channel_t demo_log("demo"); // NOLINT(cert-err58-cpp)

void CopyVolume(int volume)
{
    progress_scope_t scope(demo_log, "Copying volume %1", volume);
    demo_log.detail("Reading in blocks of %1 KiB", 64);
    if (volume == 2)
        throw exc::runtime_exc_t("Volume [%1] is gone.", volume);
    scope.close_ok();
}

// What leaves a scope by an exception closes it with "Failed."
void CopyVolumes()
{
    progress_scope_t scope(demo_log, "Copying all volumes");
    for (int volume = 1; volume <= 3; ++volume)
    {
        try
        {
            CopyVolume(volume);
        }
        catch (std::exception& e)
        {
            demo_log.error_exc(e, "Volume %1 is left out.", volume);
        }
    }
    scope.close_with("Copied %1 of %2 volumes", 2, 3);
}

void LogInAllWays()
{
    demo_log.info("The password is %1", demo_log.mask("secret"));
    CopyVolumes();
    demo_log.warning("The disk is nearly full.\nOld copies are not removed.");
    demo_log.info(logging::at(2), "At an indent of its own");
    logging::channels::cli.info("On a channel of the library");
}

// Stands for many days of logging. The size is looked at when a log is opened and after every thousandth
// message, so that a program need not ask for it.
void GrowAndRotate()
{
    posix::posix_file_t::OpenReadWrite(logging::get_log_file_path())->set_size(kGreatestSize);
    logging::GetProcessLog()->check_size();
}

} // namespace

int main(int argc, char* argv[])
{
    try
    {
        if (argc != 2)
            throw exc::runtime_exc_t("Usage: log_demo FOLDER");
        logging::start_log(std::string(argv[1]) + "/demo.log", false, true, true);
        LogInAllWays();
        GrowAndRotate();
        demo_log.info("The first line behind the archive");
    }
    catch (std::exception& e)
    {
        std::cerr << e.what() << std::endl;
        return 1;
    }
    return 0;
}
