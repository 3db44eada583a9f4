// What does it cost to count a call?

#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

#include "bench/support/bench_folder.h"
#include "bench/support/figure.h"
#include "nelvo/monitoring/thread_counters.h"
#include "nelvo/posix/posix_file.h"

namespace
{

long ReadClock()
{
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_nsec;
}

void AddStartAndStop()
{
    constexpr double kGoal = 3.5;
    const auto counters = std::make_shared<workload::CThreadCounters>();
    figure_t("thread counters, start and stop")
        .Ours(
            [counters]
            {
                counters->Start();
                counters->Stop(1);
                return counters.get();
            })
        .Against("two clock readings", kGoal, [] { return ReadClock() + ReadClock(); });
}

// On tmpfs.
void AddWrite()
{
    static const bench_folder_t folder;
    const auto file = posix::posix_file_t::CreateOrOpen(folder / "counted");
    const int descriptor = ::open((folder / "bare").c_str(), O_CREAT | O_WRONLY, 0600);
    figure_t("counted write of one byte")
        .Ours(
            [file]
            {
                file->WriteBytes(1, "x");
                return file.get();
            })
        .Against("write",
                 [descriptor]
                 {
                     if (::write(descriptor, "x", 1) != 1)
                         std::abort();
                     return descriptor;
                 });
}

} // namespace

void AddFigures()
{
    AddStartAndStop();
    AddWrite();
}
