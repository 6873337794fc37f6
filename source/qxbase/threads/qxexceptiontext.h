// The texts of the language's own exceptions.
// SPDX-License-Identifier: see LICENSE

#pragma once

/// What the exception says that is being handled, for as long as it is; null when it is none of the standard library's.
/// It has a file of its own: beside an exported class, the type that it looks for would be exported too.
///
/// Threads: any, inside a handler. Errors: none.
const char* qxHandledExceptionText();
