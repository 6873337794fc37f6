// SPDX-License-Identifier: see LICENSE

#include "qxdocument.h"

#include "qxoutput.h"

#include "qxserializeadapterreplace.h"

namespace
{

// False when the document cannot be written, after the text was shown.
bool writeTo(qxReport& report, qxSerializeAdapter& output, qxDocument& document)
{
    try {
        document.write(&output);
    } catch (const qxParserException& error) {
        report.printError(error.getErrorString().getString());
        return false;
    }
    return true;
}

void checkOutput(qxSerializeAdapter& output)
{
    if (output.hasError()) throw qxFileError(output.getError().getString());
}

} // namespace

unsigned char qxDocument::onElementStart(const qxString& name, unsigned int level)
{
    return qxXmlDom::onElementStart(name, level) && !isInterrupted();
}

qxString qxDocument::onFunction(const qxString& argument, unsigned int level)
{
    if (m_keepsText) return qxString("function:") + argument;
    return qxXmlDom::onFunction(argument, level);
}

void qxDocument::keepText()
{
    m_keepsText = true;
    setSkipWhiteSpaceCharData(false);
}

unsigned char qxDocument::onWrite()
{
    if (m_keepsLayout) {
        writeItems();
    } else {
        qxXmlDom::onWrite();
    }
    writeGenericString("\n");
    return 1;
}

void qxDocument::writeItems()
{
    setPlainOutput(true);
    const qxString declaration = getDocumentType();
    setDocumentType(qxString()); // the root element would write it on its own line
    bool isDeclared = declaration.isEmpty();
    for (qxXmlItem* item = getFirstChild(); item; item = item->getNextSibling()) {
        if (!isDeclared && dynamic_cast<qxXmlElement*>(item)) {
            writeGenericString("\n");
            writeGenericString(declaration);
            isDeclared = true;
        }
        writeGenericString("\n");
        item->write(this);
    }
    setDocumentType(declaration);
}

qxStatus writeDocument(qxReport& report, const std::string& name, qxDocument& document)
{
    if (name == "-") {
        qxOutputBuffer output;
        if (!writeTo(report, output, document)) return qxStatus::MALFORMED;
        writeOutput(output.getText());
        return qxStatus::DONE;
    }
    if (!qxSerializeAdapterReplace::canReplace(name.c_str())) { // a device or a pipe can only be written to
        qxSerializeAdapterFile output(name.c_str(), QX_SERIALIZE_OUTPUT);
        checkOutput(output);
        if (!writeTo(report, output, document)) return qxStatus::MALFORMED;
        output.flush();
        checkOutput(output);
        return qxStatus::DONE;
    }
    qxSerializeAdapterReplace output(name.c_str());
    checkOutput(output);
    if (!writeTo(report, output, document)) return qxStatus::MALFORMED;
    if (isInterrupted()) return qxStatus::INTERRUPTED;
    output.commit();
    checkOutput(output);
    return qxStatus::DONE;
}
