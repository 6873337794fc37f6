// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformdebug.h"

#include "platform/windows/qxwindows.h"

bool qxPlatformHasDebugger()
{
    return IsDebuggerPresent() != 0;
}

void qxPlatformDebugOutput(const char* text)
{
    OutputDebugStringA(text);
}

qxPlatformAnswer qxPlatformAssertDialog(const char* title, const char* body)
{
    constexpr UINT style = MB_ABORTRETRYIGNORE | MB_ICONERROR | MB_TASKMODAL | MB_SETFOREGROUND;
    switch (MessageBoxW(nullptr, qxWideText(body).c_str(), qxWideText(title).c_str(), style)) {
    case IDABORT:
        return QX_PLATFORM_ANSWER_ABORT;
    case IDRETRY:
        return QX_PLATFORM_ANSWER_RETRY;
    default: // also where no dialog can be shown
        return QX_PLATFORM_ANSWER_IGNORE;
    }
}
