// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformerror.h"

#include <cerrno>

#include <locale.h>
#include <string.h>

int qxPlatformLastError()
{
    return errno;
}

std::string qxPlatformErrorText(int error)
{
    // The "C" locale is always there, whatever language and encoding the application has set.
    static const locale_t english = newlocale(LC_ALL_MASK, "C", nullptr);
    return strerror_l(error, english);
}
