// What the sources of the file functions share.
// SPDX-License-Identifier: see LICENSE

#pragma once

struct qxPlatformFile {
    int descriptor;
};

/// Waits until the file or folder is on its disk; true as well where there is none to wait for. On false
/// the error number is in errno.
bool qxSyncDescriptor(int descriptor);
