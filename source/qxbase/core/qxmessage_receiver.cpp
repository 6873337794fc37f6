// SPDX-License-Identifier: see LICENSE

#include "qxarray.h"
#include "qxerror.h"
#include "qxmessage.h"

#include "platform/qxplatformdebug.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace
{

constexpr std::size_t MOST_HEADER_BYTES = 1024;
constexpr qxMessageLevel FLAGS_MASK = 0xF00;
constexpr int BREAKPOINT_CODE = 9999;

struct Label {
    qxMessageLevel level;
    const char* plain;
    const char* internal;
};

constexpr Label LABELS[] = {
    {QX_LEVEL_MEMORY, " Memory::", " Internal Memory::"},
    {QX_LEVEL_PERF, " Perf::", " Internal Perf::"},
    {QX_LEVEL_DEBUG, " Debug::", " Internal Debug::"},
    {QX_LEVEL_NOTICE, " Notice::", " Internal Notice::"},
    {QX_LEVEL_WARNING, " Warning::", " Internal Warning::"},
    {QX_LEVEL_FATAL, " Fatal::", " Internal Fatal::"},
    {QX_LEVEL_ASSERT, " Assert::", " Internal Assert::"},
    {QX_LEVEL_ALWAYS, " Always::", " Internal Always::"},
};

constexpr const char* OTHER_INTERNAL_LABEL = " Internal::";

const char* labelOf(qxMessageLevel level)
{
    const bool isInternal = (level & QX_FLAG_INTERNAL) != 0;
    for (const Label& label : LABELS) {
        if (label.level == (level & ~FLAGS_MASK)) return isInternal ? label.internal : label.plain;
    }
    return isInternal ? OTHER_INTERNAL_LABEL : "";
}

qxString translatedLabel(const qxString& sender, qxMessageLevel level)
{
    const qxString label(labelOf(level));
    qxMessageTranslatorInterface* const translator = qxMessage::getMessageTranslator();
    if (!translator || label.isEmpty()) return label;
    return translator->onTranslate(sender, QX_LEVEL_ALWAYS, label);
}

// At most MOST_HEADER_BYTES, without the half of a character at the end.
std::string headerOf(const qxString& sender, qxMessageLevel level)
{
    std::string header = sender.getString();
    header += translatedLabel(sender, level).getString();
    if (header.size() <= MOST_HEADER_BYTES) return header;

    std::size_t end = MOST_HEADER_BYTES;
    while (end > 0 && (static_cast<unsigned char>(header[end]) & 0xC0) == 0x80) --end;
    header.resize(end);
    return header;
}

void writePlatformDebugOutput(const char* line)
{
    qxPlatformDebugOutput(line);
}

qxAssertAnswer askPlatformDialog(const char* title, const char* body)
{
    switch (qxPlatformAssertDialog(title, body)) {
    case QX_PLATFORM_ANSWER_ABORT:
        return QX_ASSERT_ABORT;
    case QX_PLATFORM_ANSWER_RETRY:
        return QX_ASSERT_RETRY;
    case QX_PLATFORM_ANSWER_IGNORE:
        break;
    }
    return QX_ASSERT_IGNORE;
}

std::atomic<void (*)(const char*)> s_debugOutput{&writePlatformDebugOutput};
std::atomic<qxAssertAnswer (*)(const char*, const char*)> s_assertDialog{&askPlatformDialog};

void showAssertion(const char* text)
{
    const std::string body = std::string("\n") + text +
                             "\n\n---- Press 'Retry' to debug  ----"
                             "\n\n---- Press 'Ignore' to continue execution  ----";
    const qxAssertAnswer answer = s_assertDialog.load()("QuaxoSDK Assert", body.c_str());
    if (answer == QX_ASSERT_ABORT) std::abort();
    if (answer == QX_ASSERT_RETRY) throw qxFatalError("breakpoint", BREAKPOINT_CODE, QX_FLAG_UNTRANSLATED);
}

class qxDefaultMessageReceiver final : public qxMessageReceiverInterface
{
public:
    void onMessage(const qxString& sender, qxMessageLevel level, const char* text) override
    {
        const std::string header = headerOf(sender, level);
        std::printf("\r%s", header.c_str());
        std::printf("%s\n", text);
        std::fflush(stdout);
        s_debugOutput.load()((header + text + "\n").c_str());
        if ((level & 0xF000) == QX_LEVEL_ASSERT) showAssertion(text);
    }
};

} // namespace

qxMessageReceiverInterface* qxMessage::getDefaultMessageReceiver()
{
    static qxDefaultMessageReceiver* const receiver = new qxDefaultMessageReceiver; // never destroyed
    return receiver;
}

void qxMessage::setDebugOutput(void (*output)(const char* line))
{
    s_debugOutput.store(output ? output : &writePlatformDebugOutput);
}

void qxMessage::setAssertDialog(qxAssertAnswer (*dialog)(const char* title, const char* body))
{
    s_assertDialog.store(dialog ? dialog : &askPlatformDialog);
}

qxArray<qxTranslation> qxMessage::getDefaultTranslations()
{
    qxArray<qxTranslation> table;
    const auto append = [&table](const char* label) {
        table.append(qxTranslation{qxString(), label, label});
    };
    for (const Label& label : LABELS) {
        append(label.plain);
        append(label.internal);
    }
    append(OTHER_INTERNAL_LABEL);
    return table;
}
