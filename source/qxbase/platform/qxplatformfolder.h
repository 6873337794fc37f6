// Folders of the operating system, and what changes in them.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <string>

/// Makes the folder of the file `name`, with all above it that are missing, the user's alone, and waits until the disk
/// knows them. True when it is there.
///
/// Threads: any. `error` as for files.
bool qxPlatformFolderCreateFor(const char* name, int& error);

/// The folder where programs keep what the user has set, without a "/" behind it, in `folder`. False when the environment
/// does not say.
bool qxPlatformFolderOfSettings(std::string& folder);

/// Waits for changes of files by any program.
///
/// Lifetime: made by qxPlatformFolderWatchOpen, ended by qxPlatformFolderWatchClose while nobody waits.
/// Threads:  one thread waits, any other may wake it.
struct qxPlatformFolderWatch;

/// Begins to watch the folder of the file `name`, and, where that is a link, the folder of the file itself. A folder that
/// is missing is not watched. Null only without memory or where the system has no watches left.
qxPlatformFolderWatch* qxPlatformFolderWatchOpen(const char* name, int& error);
void qxPlatformFolderWatchClose(qxPlatformFolderWatch* watch);

/// Waits, at most `milliseconds`, until something in the folders changes or qxPlatformFolderWatchWake is called. Changes
/// since the watch was opened count, also those before this call.
void qxPlatformFolderWatchWait(qxPlatformFolderWatch* watch, unsigned int milliseconds);

/// Ends the wait that runs, or the next one.
void qxPlatformFolderWatchWake(qxPlatformFolderWatch* watch);

/// Whether the watch has lost a folder, which was moved or removed, or never had it: time to open another.
bool qxPlatformFolderWatchIsBroken(const qxPlatformFolderWatch* watch);
