#include "nelvo/logging/channels.h"

#include <boost/make_shared.hpp>

#include "nelvo/logging/log.h"
#include "nelvo/logging/receiver/debug_log.h"

namespace logging::channels
{
namespace
{

boost::shared_ptr<log_t> MakeDebugLog()
{
    return boost::make_shared<log_t>(boost::make_shared<receiver::COutputDebugStringLog>());
}

} // namespace

// Without memory for these there is no program: an exception here may end it.
// NOLINTBEGIN(cert-err58-cpp)
const log_channel_t default_log("");
const log_channel_t dmn("dmn");
const log_channel_t cli("cli");
const log_channel_t srv("srv");
const log_channel_t prt("prt");
const log_channel_t vcb("vcb");
// A second object with the tag of the one above.
// Kept: Channels.TwoObjectsCarryTheTagVcb
const log_channel_t vcb_second("vcb");
const log_channel_t drv("drv");
const log_channel_t stg("stg");
const log_channel_t cpl("cpl");
const log_channel_t bkp("bkp");
const log_channel_t nfs("nfs");
const log_channel_t rpc("rpc");
// Its messages are formatted in full and then lost, and never reach the process log.
// Kept: Channels.DbgNeverReachesTheProcessLog
const log_channel_t dbg("dbg", MakeDebugLog());
const log_channel_t vhd("vhd");
const log_channel_t mnt("mnt");
const log_channel_t dt("dt ");
// NOLINTEND(cert-err58-cpp)

} // namespace logging::channels
