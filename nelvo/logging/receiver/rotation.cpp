#include "nelvo/logging/receiver/rotation.h"

#include <cstdint>
#include <exception>

#include "nelvo/core/exc/rethrow.h"
#include "nelvo/fs/file_aging.h"
#include "nelvo/logging/receiver/log_file.h"
#include "nelvo/logging/receiver/zip_writer.h"

namespace logging::receiver
{
namespace
{

constexpr std::uint64_t kSizeLimit = 15728639;
constexpr int kAgesLimit = 10;
constexpr int kCompressionLevel = 9;
const char kArchiveExtension[] = ".log.gz";

} // namespace

void validate_log_size(log_file_t& receiver)
try
{
    if (receiver.get_size() <= kSizeLimit)
        return;
    // The archive of a numbered log, a.1.log, has the name of an old archive of a.log, and ages with those.
    // Kept: Rotation.NumberedLogsArchivesAgeWithTheFirstLogs
    const std::string archive = receiver.get_path() + ".gz";
    // The old archives make room first. If the new one cannot be opened, they have aged for nothing, and do
    // so again at each attempt.
    // Kept: Rotation.FailureToOpenTheArchiveHasAgedTheOthers
    util::AgeFile(kAgesLimit, archive, kArchiveExtension);
    util::zip_writer_t writer(archive, kCompressionLevel);
    receiver.compress_to(writer);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(
        false, util::Format("Unable to validate log size limit. Log path: [%1].", receiver.get_path()), e);
}

} // namespace logging::receiver
