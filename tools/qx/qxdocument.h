// A document tree that the interrupt key can stop, and how it is written out.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxreport.h"
#include "qxstatus.h"

#include "qxxml.h"

#include <optional>
#include <string>

/// A document that ends in one line feed when it is written.
class qxDocument : public qxXmlDom
{
public:
    /// From here on all text comes back as it was, also on a later write.
    void keepText();

    /// Writes each item of the document itself on a line of its own and all else plain.
    void keepLayout() { m_keepsLayout = true; }

    unsigned char onElementStart(const qxString& name, unsigned int level) override;
    qxString onFunction(const qxString& argument, unsigned int level) override;
    unsigned char onWrite() override;

private:
    void writeItems();

    bool m_keepsText = false;
    bool m_keepsLayout = false;
};

/// Writes `document` to the file `name`, as a whole or not at all; to standard output for "-". Shows what went
/// wrong; raises qxFileError for a file that cannot be written.
qxStatus writeDocument(qxReport& report, const std::string& name, qxDocument& document);
