// Formats filled in without a string.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxargument.h"

#include <cstddef>

class qxTextBuilder;

/// Appends `format` with its conversions filled in, as qxString::format does it.
void qxFormatText(qxTextBuilder& out, const char* format, std::size_t length, const qxArgument* arguments,
                  unsigned int count);
