// What the commands about settings share.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxcommands.h"

#include "qxkeydatabase.h"

#include <string>
#include <vector>

/// A key as it is written on the command line: NAME of the default path, or PATH/NAME.
struct qxConfKey {
    qxString path;
    qxString name;
};

/// Raises qxUsageError for what is no key.
qxConfKey parseConfKey(const std::string& text);

/// PATH/NAME.
std::string confKeyText(const qxString& path, const qxString& name);

/// `value` on a line: as it stands where that is clear, else in double quotes; "(none)" where there is none.
std::string confValueText(bool isThere, const qxString& value);

/// Puts the document `url` in force; one that is missing has no keys. Shows what is wrong with it.
qxStatus openSettings(qxReport& report, const std::string& url);

/// The same for the document that the command line or the surroundings name.
qxStatus openSettings(qxReport& report, const qxCommandLine& line);

qxStatus runConfWatch(qxReport& report, const qxCommandLine& line);
