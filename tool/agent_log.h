#pragma once

// The tool's own channel, "agentid" in the log.

#include "nelvo/logging/log_channel.h"

// All that the tool itself says goes here.
extern const logging::log_channel_t agent_log;
