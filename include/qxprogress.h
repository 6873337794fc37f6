// How far long work has come.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"
#include "qxstring.h"

/// Receives the progress of long work.
///
/// Lifetime: must stay alive while it is installed.
/// Threads:  called with the channel's lock held, one call at a time; it must not wait for another thread
///           that reports progress.
class QX_API qxProgressInterface
{
public:
    virtual ~qxProgressInterface() = default;

    /// `percent` is 0 to 100; `line` is both as one line to overwrite the one before: "\r%s:Progress
    /// %d%%\t\t". Both texts are valid only during the call.
    virtual void onProgress(const qxString& text, unsigned int percent, const char* line) = 0;
};

/// The one channel for progress. Nothing is shown until a receiver is installed.
///
/// Threads: any.
/// Errors:  what the receiver raises leaves report; the channel stays usable.
class QX_API qxProgress
{
public:
    /// Replaces the receiver; null removes it. When this returns the one before is not called any more.
    static void setReceiver(qxProgressInterface* receiver);
    static qxProgressInterface* getReceiver();

    /// A receiver that writes each line to standard output.
    static qxProgressInterface* getDefaultReceiver();

    /// Tells the receiver that the work called `text` is done to `percent`, at most 100. Without a receiver
    /// it does nothing.
    static void report(const qxString& text, unsigned int percent);
};
