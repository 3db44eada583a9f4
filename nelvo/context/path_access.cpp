#include "nelvo/context/path_access.h"

#include "nelvo/context/common_lib_ctx.h"

namespace security
{

void CheckPathAccess(const util::str_t& path) { GetCommonLibCtx()->CheckAccess(path); }

} // namespace security
