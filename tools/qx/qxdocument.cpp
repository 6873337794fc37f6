// SPDX-License-Identifier: see LICENSE

#include "qxdocument.h"

#include "qxoutput.h"

#include "qxserializeadapterreplace.h"

namespace
{

struct Interruption {};

/// Standard output, or nothing at all.
class Output final : public qxSerializeAdapter
{
public:
    explicit Output(bool isTrial) : m_isTrial(isTrial) {}

protected:
    using qxSerializeAdapter::read_imp;
    unsigned char read_imp() override { return 0; } // never read
    void write_imp(unsigned char byte) override { write_imp(&byte, 1); }
    void write_imp(unsigned char* bytes, unsigned int count) override
    {
        if (isInterrupted()) throw Interruption();
        if (!m_isTrial) writeOutput({reinterpret_cast<const char*>(bytes), count});
    }

private:
    const bool m_isTrial;
};

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

// A document that cannot be written shows nothing: it is tried first. The indentation of deep documents is more than
// memory holds, and makes no difference.
qxStatus writeToStandardOutput(qxReport& report, qxDocument& document)
{
    Output trial(true);
    Output output(false);
    const bool isPlain = document.isPlainOutput();
    try {
        document.setPlainOutput(true);
        const bool isWritable = writeTo(report, trial, document);
        document.setPlainOutput(isPlain);
        if (!isWritable) return qxStatus::MALFORMED;
        writeTo(report, output, document);
    } catch (const Interruption&) {
        return qxStatus::INTERRUPTED;
    }
    return qxStatus::DONE;
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
    if (name == "-") return writeToStandardOutput(report, document);
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
