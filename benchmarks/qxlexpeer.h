// A scanner made by a generator, to measure beside.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <cstddef>
#include <cstdint>

/// Scans a text; the sum is made of the type and the length of each token.
std::uint64_t qxScanWithPeer(const char* text, std::size_t count);
