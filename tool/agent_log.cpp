#include "tool/agent_log.h"

// Built before main, where running out of memory ends the process.
const logging::log_channel_t agent_log("agentid"); // NOLINT(cert-err58-cpp)
