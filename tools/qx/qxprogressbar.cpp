// SPDX-License-Identifier: see LICENSE

#include "qxprogressbar.h"

#include "qxconsole.h"

#include <cstdio>
#include <string>

namespace
{

constexpr std::chrono::milliseconds PATIENCE(400);
constexpr unsigned int WIDTH = 40; // of the bar, in characters

const char CLEAR_LINE[] = "\r\033[K";

} // namespace

qxProgressBar::qxProgressBar() : m_start(std::chrono::steady_clock::now())
{
    if (qxConsoleIsTerminal(qxConsoleStream::ERRORS)) qxProgress::setReceiver(this);
}

qxProgressBar::~qxProgressBar()
{
    qxProgress::setReceiver(nullptr);
    if (m_isShown) std::fputs(CLEAR_LINE, stderr);
}

void qxProgressBar::onProgress(const qxString& text, unsigned int percent, const char*)
{
    if (std::chrono::steady_clock::now() - m_start < PATIENCE) return;
    m_isShown = true;
    const unsigned int full = percent * WIDTH / 100;
    const std::string line = CLEAR_LINE + std::string(full, '#') + std::string(WIDTH - full, '.') + " " +
                             std::to_string(percent) + "% " + text.left(60).getString();
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
}
