// SPDX-License-Identifier: see LICENSE

#include "qxprogress.h"

#include "qxtestsupport.h"

#include <string>
#include <vector>

namespace
{

TEST(qxProgress, givesTheReceiverTheLine)
{
    struct Receiver final : qxProgressInterface {
        Receiver() { qxProgress::setReceiver(this); }
        ~Receiver() override { qxProgress::setReceiver(nullptr); }
        void onProgress(const qxString& text, unsigned int percent, const char* line) override
        {
            calls.push_back(std::string(text) + "|" + std::to_string(percent) + "|" + line);
        }
        std::vector<std::string> calls;
    } receiver;
    qxProgress::report("Reading 50%", 0);
    qxProgress::report("Reading", 42);
    qxProgress::report("Reading", 101);

    const std::vector<std::string> expected = {
        "Reading 50%|0|\rReading 50%:Progress 0%\t\t",
        "Reading|42|\rReading:Progress 42%\t\t",
        "Reading|100|\rReading:Progress 100%\t\t",
    };
    EXPECT_EQ(receiver.calls, expected);
}

TEST(qxProgress, writesNothingWithoutAReceiver)
{
    testing::internal::CaptureStdout();
    qxProgress::report("Reading", 42);
    qxProgress::setReceiver(qxProgress::getDefaultReceiver());
    qxProgress::report("Writing", 43);
    qxProgress::setReceiver(nullptr);
    qxProgress::report("Reading", 44);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\rWriting:Progress 43%\t\t");
}

} // namespace
