#include "backend/error_codes.h"

namespace orlocal {

std::int64_t g_llasterror = 0;

}  // namespace orlocal
