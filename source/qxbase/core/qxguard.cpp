// SPDX-License-Identifier: see LICENSE

#include "qxguard.h"

#include "qxmessage.h"

qxRecursiveBodyGuard::~qxRecursiveBodyGuard()
{
    if (*m_counter != 0) {
        --*m_counter;
        return;
    }
    try {
        qxMessage::message(QX_LEVEL_WARNING,
                           "RECURSIVE MISMATCH ! Left recursion with zero recursion count.");
    } catch (...) { // a warning must not end the process when this runs while another error is under way
    }
}
