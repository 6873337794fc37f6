// Who opens the URLs of the library's own schemes.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"

#include <string_view>

/// Opens `url`, which begins with its scheme. An adapter with an error is reported and dropped; null, too, is reported.
using qxURLOpener = qxRefPointer<qxSerializeAdapter> (*)(const qxString& url, qxSerializeAction action);

/// `opener` opens the URLs of `scheme` (lower case, without ":", a constant) from now on, and no manager can be registered
/// for it. For the initialisers of constants in the floors above:
///
///     [[maybe_unused]] const bool isAdded = qxAddURLScheme("reg", openSetting);
///
/// Allocates nothing. False for a scheme that has an opener, and when there is no room.
///
/// Threads: only while the library is loaded; the other functions here any.
bool qxAddURLScheme(const char* scheme, qxURLOpener opener);

/// Whether the library opens the URLs of `scheme` (lower case) itself.
bool qxIsOwnURLScheme(std::string_view scheme);

/// What opens the URLs of `scheme` (lower case); null when no floor above does.
qxURLOpener qxFindURLOpener(std::string_view scheme);

/// Whether the scheme of `url` is for callers only: what names an address in this process ("mem") or waits for the
/// console ("con") or a peer in the network ("tcp", "udp") is refused where documents or settings, which come from outside,
/// name URLs.
bool qxIsURLForCallersOnly(const qxString& url);
