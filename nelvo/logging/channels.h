#pragma once

// The library's channels. They are built in this order, before main; each logs to the process log, but
// for dbg. None may be used in a static initialiser of another source, which may run earlier, nor in the
// destructor of a static object that was built earlier. Two objects carry the tag "vcb", and the blank of
// "dt " belongs to the tag.

#include "nelvo/logging/log_channel.h"

namespace logging::channels
{

// Each is named by its tag; the first has the empty one.
extern const log_channel_t default_log; // the empty tag; nearly everything goes here
extern const log_channel_t dmn;
extern const log_channel_t cli;
extern const log_channel_t srv;
extern const log_channel_t prt;
extern const log_channel_t vcb;
extern const log_channel_t vcb_second;
extern const log_channel_t drv;
extern const log_channel_t stg;
extern const log_channel_t cpl;
extern const log_channel_t bkp;
extern const log_channel_t nfs;
extern const log_channel_t rpc;
extern const log_channel_t dbg; // has a log of its own, whose receiver swallows everything
extern const log_channel_t vhd;
extern const log_channel_t mnt;
extern const log_channel_t dt;

} // namespace logging::channels
