// SPDX-License-Identifier: see LICENSE

#include "qxprogramexecution.h"

#include "qxerror.h"
#include "qxmemorycheck.h"
#include "qxmessage.h"
#include "threads/qxexceptiontext.h"

#include <exception>
#include <optional>

namespace
{

void sendFatal(const char* text)
{
    qxMessage::messageText(qxMessage::getDefaultSender(), QX_LEVEL_FATAL | QX_FLAG_UNTRANSLATED, text);
}

// A thread that the system unwinds, as pthread_exit does, passes every `catch (...)` and must go on: it is no exception
// of the language's.
void passUnwinding()
{
    if (!std::current_exception()) throw;
}

} // namespace

qxProgramExecution::~qxProgramExecution() noexcept(false) = default;

void qxProgramExecution::execute(const qxMemoryCheck* owner)
{
    std::optional<qxMemoryWatch> watch;
    if (owner) watch.emplace(*owner);
    const auto isHere = [&watch] { return !watch || watch->isAlive(); };
    try {
        try {
            onProgramExecution();
        } catch (const qxBaseError& error) {
            isHere() ? onBaseException(error) : error.reportError();
        } catch (...) {
            passUnwinding();
            const char* const text = qxHandledExceptionText();
            sendFatal(text ? text : "A body was left by an exception of unknown type");
            if (isHere()) onCrash(nullptr);
        }
    } catch (...) { // out of a report: there is nothing left to tell it with
        passUnwinding();
    }
}

void qxProgramExecution::onCrash(qxStackInfo*) {}

void qxProgramExecution::onBaseException(const qxBaseError& error)
{
    error.reportError();
}
