// Counts the allocations of each tag.
// SPDX-License-Identifier: see LICENSE

#pragma once

/// Counts one allocation under the text of `tag`; null is ignored. Does nothing in builds with NDEBUG.
///
/// Threads: any. Errors: none; a tag for which there is no room is not counted.
void qxCountTag(const char* tag);
