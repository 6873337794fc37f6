// The least program: it tells which version of the library it was built with.
// SPDX-License-Identifier: see LICENSE

#include <qxconfig.h>

#include <cstdio>

int main()
{
    std::puts("Hello from qxbase " QX_VERSION);
    return 0;
}
