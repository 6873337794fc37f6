// A progress bar on the terminal.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxprogress.h"

#include <chrono>

/// Shows the library's progress on standard error while it lives, when that is a terminal and the work has
/// taken over 0.4 seconds. Leaves a clean line behind.
class qxProgressBar : public qxProgressInterface
{
public:
    qxProgressBar();
    ~qxProgressBar() override;
    qxProgressBar(const qxProgressBar&) = delete;
    qxProgressBar& operator=(const qxProgressBar&) = delete;

    void onProgress(const qxString& text, unsigned int percent, const char* line) override;

private:
    std::chrono::steady_clock::time_point m_start;
    bool m_isShown = false;
};
