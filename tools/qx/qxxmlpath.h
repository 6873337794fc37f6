// Paths of the command line: to items of a document and to their attributes.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxxml.h"

#include <string>
#include <vector>

/// A path as the user wrote it.
struct qxXmlPath {
    explicit qxXmlPath(const std::string& path);

    std::string text;
    std::string item;      ///< path of the item
    std::string attribute; ///< name of its attribute; empty when the item itself is meant
};

/// The items of `document` that have what the path names, in document order; raises qxUsageError for a path
/// that is too long.
std::vector<qxXmlItem*> findByPath(qxXmlDom& document, const qxXmlPath& path);
