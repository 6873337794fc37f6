// Where settings documents come from and go to.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

#include <string>

struct qxKeySource {
    qxString url;
    std::string
        file; ///< its full name, links kept: where they lead is looked up each time; empty for other streams
};

/// The document of the system.
qxKeySource qxDefaultKeySource();

qxKeySource qxMakeKeySource(const qxString& url);

/// The document of the user; an empty URL where the environment says no folder for it.
qxKeySource qxUserKeySource();

/// The document that the environment variable QUAXO_SETTINGS names; else the user's, when it is there; else the system's,
/// when it is there; else the user's.
qxKeySource qxPreferredKeySource();
