#pragma once

namespace util
{
class str_t;
}

namespace security
{

// Asks the process-wide access permissions about a path, before it is opened or changed. Throws what
// they throw. The first call in a process builds the common library context.
void CheckPathAccess(const util::str_t& path);

} // namespace security
