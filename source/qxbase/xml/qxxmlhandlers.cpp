// SPDX-License-Identifier: see LICENSE

#include "qxxmlhandlers.h"

qxXmlCustomDataInterface::~qxXmlCustomDataInterface() = default;

qxXmlDynamicTypeInterface::~qxXmlDynamicTypeInterface() = default;

qxXmlObjectInterface::~qxXmlObjectInterface() = default;
