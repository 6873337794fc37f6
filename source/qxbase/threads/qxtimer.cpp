// SPDX-License-Identifier: see LICENSE

#include "qxtimer.h"

#include "qxmessage.h"
#include "qxtime.h"

qxTimer::qxTimer(const qxString& name)
    : qxNameInterface(name), m_start(qxTime::systemSeconds()), m_last(m_start)
{}

double qxTimer::getTime()
{
    m_last = qxTime::systemSeconds();
    return m_last - m_start;
}

void qxTimer::notifyTime(const double& limit, qxMessageLevel level)
{
    const double time = getTime();
    if (!(time >= limit)) return;
    qxMessage::message(level, "--- QX_TIMER '%s' Time: %g Freq: %g ---", getName(), time, 1.0 / time);
}

void qxTimer::reset(unsigned char fromLastReading)
{
    if (!fromLastReading) m_last = qxTime::systemSeconds();
    m_start = m_last;
}

void qxTimer::setTime(const double& seconds)
{
    m_start = qxTime::systemSeconds() - seconds;
    m_last = m_start;
}
