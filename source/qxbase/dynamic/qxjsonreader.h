// Reads JSON text into dynamic values.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxdynamictype.h"

#include <string_view>

/// Sets `value` and returns true; or leaves it, sets `error` to what is wrong and where, and returns false. Depth costs
/// memory only.
bool qxReadJSON(std::string_view text, qxDynamicType& value, qxString& error);
