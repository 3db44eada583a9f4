// Asks the source that the argument names, with an id in the place of its answer, and prints what became of
// it.

#include <cstring>
#include <iostream>

#include "tool/agent_id.h"

int main(int /*argc*/, char* argv[])
{
    Guid id = Guid::Parse("{99999999-9999-9999-9999-999999999999}");
    const bool found = std::strcmp(argv[1], "dmidecode") == 0 ? GetDmidecodeAgentId(id) : GetSysfsAgentId(id);
    std::cout << (found ? "found " : "not found ") << id.ToString() << std::endl;
    return 0;
}
