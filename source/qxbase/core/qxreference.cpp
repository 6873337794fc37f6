// SPDX-License-Identifier: see LICENSE

#include "qxreference.h"

#include "qxerror.h"
#include "qxguard.h"

#include <exception>

QX_DEFINE_ROOT_TYPE(qxReference)

qxReference* qxReference::clone() const
{
    throwFatalException("Unimplemented clone called for type '%s'", getTypeName());
}

void qxReference::setCopyMode(const qxCopyMode& mode)
{
    m_copyMode = mode;
}

unsigned int qxReference::unrefNoDelete()
{
    if (m_count == 0) {
        raiseMismatch("REFRENCE MISMATCH ! Unref an object with zero reference count.");
        return 0;
    }
    return --m_count;
}

bool qxReference::checkDelete()
{
    if (m_count != 0) return false;
    delete this;
    return true;
}

bool qxReference::releaseRefs()
{
    return true;
}

void qxReference::raiseMismatch(const char* text)
{
    // A second exception while one is under way would end the process, and these faults come up in
    // destructors.
    if (std::uncaught_exceptions() == 0) throwFatalException(text, nullptr);
    try {
        qxMessage::message(QX_LEVEL_FATAL, text);
    } catch (...) { // what a receiver raises cannot leave here either
    }
}

void qxReference::throwFatalException(const char* format, const char* argument)
{
    qxExceptionThrows::qxThrowFatal(format, argument);
}

void qxThreadSafeReference::ref()
{
    const qxBodyGuard guard(m_lock);
    ++m_count;
}

void qxThreadSafeReference::unref()
{
    // checkDelete looks again: by now another thread may have taken a new reference.
    if (countDown() == 1) checkDelete();
}

unsigned int qxThreadSafeReference::unrefNoDelete()
{
    const unsigned int before = countDown();
    return before == 0 ? 0 : before - 1;
}

bool qxThreadSafeReference::checkDelete()
{
    if (getRef() != 0) return false;
    delete this;
    return true;
}

unsigned int qxThreadSafeReference::getRef() const
{
    const qxBodyGuard guard(m_lock);
    return m_count;
}

unsigned int qxThreadSafeReference::countDown()
{
    unsigned int before;
    {
        const qxBodyGuard guard(m_lock);
        before = m_count;
        if (before != 0) --m_count;
    }
    if (before == 0) raiseMismatch("REFRENCE MISMATCH ! Unref an object with zero reference count.");
    return before;
}
