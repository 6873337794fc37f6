// SPDX-License-Identifier: see LICENSE

#include "qxconfig.h"

// Without this the sanitizers end the process where an allocation is refused. They look the names up.
extern "C" QX_API const char* __asan_default_options();
extern "C" QX_API const char* __tsan_default_options();
const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}
const char* __tsan_default_options()
{
    return "allocator_may_return_null=1";
}
