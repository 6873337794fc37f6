// SPDX-License-Identifier: see LICENSE

#include "threads/qxexceptiontext.h"

#include <exception>

const char* qxHandledExceptionText()
{
    try {
        throw;
    } catch (const std::exception& exception) {
        return exception.what();
    } catch (...) {
        return nullptr;
    }
}
