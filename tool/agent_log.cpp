#include "tool/agent_log.h"

const logging::log_channel_t agent_log("agentid");
