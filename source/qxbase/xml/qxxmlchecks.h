// The checks of the XML reader: what each expected.
// SPDX-License-Identifier: see LICENSE

#pragma once

/// The error text of a check that has one of its own; null for one whose error is its location.
const char* qxXmlCheckOwnText(unsigned int number);
