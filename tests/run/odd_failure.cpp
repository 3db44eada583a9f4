// The entry of the tool over a run that throws what is no std::exception.

#include "tool/agent_id.h"

void RunAgentIdTool(int /*argc*/, const char* const /*argv*/[]) { throw 1; }
