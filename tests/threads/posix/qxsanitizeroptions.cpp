// SPDX-License-Identifier: see LICENSE

#include "qxconfig.h"

// What a thread that is ended from outside has taken stays taken: in the files of this name. The sanitizer looks the
// function up.
extern "C" QX_API const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions()
{
    return "leak:qxthread_kill\n";
}
