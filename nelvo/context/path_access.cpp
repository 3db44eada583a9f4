#include "nelvo/context/path_access.h"

namespace security
{

void CheckPathAccess(const util::str_t&) {}

} // namespace security
