// What the sources of the file functions share.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <string>

struct qxPlatformFile {
    int descriptor;
};

/// Waits until the file or folder is on its disk; true as well where there is none to wait for. On false
/// the error number is in errno.
bool qxSyncDescriptor(int descriptor);

/// Follows the links that `name` is, and puts the name of the file in its place; it need not exist. Returns the error
/// number, 0 for none.
int qxFollowLinks(std::string& name);

/// Waits until the disk knows what is in the folder of `name`; false, and errno, when that failed.
bool qxSyncFolderOf(const std::string& name);
