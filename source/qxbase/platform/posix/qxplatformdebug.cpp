// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformdebug.h"

#include "platform/qxplatformclock.h"

#include <atomic>
#include <cerrno>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

namespace
{

constexpr double SECONDS_BETWEEN_LOOKS = 0.25;

void writeError(std::string_view text)
{
    while (!text.empty()) {
        const ssize_t part = write(STDERR_FILENO, text.data(), text.size());
        if (part < 0 && errno != EINTR) return; // nobody is left to be told
        if (part > 0) text.remove_prefix(static_cast<std::size_t>(part));
    }
}

bool isTraced()
{
    const int descriptor = open("/proc/self/status", O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return false;
    char text[4096]; // the line stands among the first
    const ssize_t length = read(descriptor, text, sizeof(text));
    close(descriptor);
    if (length <= 0) return false;

    constexpr std::string_view label = "\nTracerPid:\t";
    const std::string_view status(text, static_cast<std::size_t>(length));
    const std::size_t found = status.find(label);
    return found != std::string_view::npos && !status.substr(found + label.size()).starts_with("0\n");
}

bool isSomebodyThere()
{
    if (!isatty(STDIN_FILENO) || !isatty(STDERR_FILENO)) return false;
    // In the background, reading would stop the process. -1: not our controlling terminal, which never does.
    const pid_t foreground = tcgetpgrp(STDIN_FILENO);
    return foreground == -1 || foreground == getpgrp();
}

// Reads a line and gives its only character other than a blank, in upper case; 0 when it has none or more.
// False at the end of the input. Past the C library, whose buffer belongs to the application.
bool readLetter(char& letter)
{
    letter = 0;
    bool isOnly = true;
    for (;;) {
        char next = 0;
        const ssize_t length = read(STDIN_FILENO, &next, 1);
        if (length < 0 && errno == EINTR) continue;
        if (length <= 0) return false;
        if (next == '\n') break;
        if (next == ' ' || next == '\t' || next == '\r') continue;
        if (letter != 0) isOnly = false;
        letter = next;
    }
    if (!isOnly) letter = 0;
    if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
    return true;
}

} // namespace

bool qxPlatformHasDebugger()
{
    static std::atomic<double> s_nextLook{0.0}; // on the steady clock
    static std::atomic<bool> s_attached{false};

    const double now = qxPlatformSteadySeconds();
    if (now >= s_nextLook.load(std::memory_order_relaxed)) {
        s_attached.store(isTraced(), std::memory_order_relaxed);
        s_nextLook.store(now + SECONDS_BETWEEN_LOOKS, std::memory_order_relaxed);
    }
    return s_attached.load(std::memory_order_relaxed);
}

void qxPlatformDebugOutput(const char* text)
{
    if (qxPlatformHasDebugger()) writeError(text);
}

qxPlatformAnswer qxPlatformAssertDialog(const char* title, const char* body)
{
    writeError(std::string(title) + "\n" + body + "\n");
    if (!isSomebodyThere()) return QX_PLATFORM_ANSWER_IGNORE;
    for (;;) {
        writeError("(A)bort, (R)etry or (I)gnore? ");
        char letter = 0;
        if (!readLetter(letter)) return QX_PLATFORM_ANSWER_IGNORE;
        if (letter == 'A') return QX_PLATFORM_ANSWER_ABORT;
        if (letter == 'R') return QX_PLATFORM_ANSWER_RETRY;
        if (letter == 'I') return QX_PLATFORM_ANSWER_IGNORE;
    }
}
