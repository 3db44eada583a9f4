#pragma once

// The tool's own channel, "agentid" in the log.

#include "nelvo/logging/log_channel.h"

extern const logging::log_channel_t agent_log;
