// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformdebug.h"

#include "platform/windows/qxwindows.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace
{

// The debug output reaches debuggers as an exception of this number; its facts are length and address of the text.
constexpr DWORD DEBUG_TEXT = 0x40010006;

std::string s_debugText;

LONG CALLBACK takeDebugText(EXCEPTION_POINTERS* pointers)
{
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    if (record.ExceptionCode == DEBUG_TEXT)
        s_debugText.append(reinterpret_cast<const char*>(record.ExceptionInformation[1]),
                           record.ExceptionInformation[0] - 1); // counts the zero at the end
    return EXCEPTION_CONTINUE_SEARCH;
}

TEST(qxPlatformDebugOutput, reachesTheSystemsAsItIs)
{
    s_debugText.clear();
    void* const handler = AddVectoredExceptionHandler(1, &takeDebugText);
    qxPlatformDebugOutput("100%s seen\n");
    qxPlatformDebugOutput("and \xc3\xa9\n");
    RemoveVectoredExceptionHandler(handler);
    EXPECT_EQ(s_debugText, "100%s seen\nand \xc3\xa9\n");
}

// Waits for a dialog of this title, presses one of its buttons and gives its text in `body`.
void press(const wchar_t* title, WORD button, std::wstring& body)
{
    HWND dialog = nullptr;
    HWND text = nullptr;
    while (!text) {
        Sleep(1);
        dialog = FindWindowW(nullptr, title);
        if (dialog) text = GetDlgItem(dialog, 0xFFFF); // made last but for the buttons
    }
    while (!GetDlgItem(dialog, button) || !IsWindowVisible(dialog)) Sleep(1);
    wchar_t room[100] = {};
    GetWindowTextW(text, room, 100);
    body = room;
    PostMessageW(dialog, WM_COMMAND, button, 0);
}

TEST(qxPlatformAssertDialog, isAWindowThatGivesTheButtonPressed)
{
    const struct {
        WORD button;
        qxPlatformAnswer answer;
    } rows[] = {{IDABORT, QX_PLATFORM_ANSWER_ABORT},
                {IDRETRY, QX_PLATFORM_ANSWER_RETRY},
                {IDIGNORE, QX_PLATFORM_ANSWER_IGNORE}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.button);
        std::wstring body;
        std::thread user([&] { press(L"A title \x00e9", row.button, body); });
        EXPECT_EQ(qxPlatformAssertDialog("A title \xc3\xa9", "100%s\n\xe2\x82\xac"), row.answer);
        user.join();
        EXPECT_EQ(body, L"100%s\n\x20ac");
    }
}

} // namespace
