#include "nelvo/context/agent_options.h"

CAgentOptions& GetAgentOptions()
{
    static CAgentOptions options;
    return options;
}
