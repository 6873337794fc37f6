// The words of the form that dynamic values have in documents.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <string_view>

constexpr std::string_view QX_XML_DYN = "qxDyn";  ///< the element of a value
constexpr std::string_view QX_XML_OBJ = "qxObj";  ///< the element of an object
constexpr std::string_view QX_XML_ITEM = "value"; ///< the elements of the values in it

// Attributes
constexpr std::string_view QX_XML_NAME = "name";
constexpr std::string_view QX_XML_TYPE = "type";
constexpr std::string_view QX_XML_BINARY =
    "64"; ///< behind these two: as base64, where it cannot stand as it is
constexpr std::string_view QX_XML_REST =
    "64b"; ///< behind them: the rest of that, where it is too long for an attribute
constexpr std::string_view QX_XML_TIME = "time";
constexpr std::string_view QX_XML_REFERENCES = "references"; ///< how many objects the value referred to
constexpr std::string_view QX_XML_ENCODING = "encoding";     ///< the content is binary
constexpr std::string_view QX_XML_BASE64 = "b64";
constexpr std::string_view QX_XML_HEX = "hex";
