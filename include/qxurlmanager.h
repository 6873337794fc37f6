// Who opens the URLs of a scheme.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"

/// Opens the URLs of the schemes that it is registered for; see qxSerializeAdapter::registerURLManager.
///
/// Lifetime: reference counted; the registry holds it while it is registered.
/// Threads:  called on the thread that opens the URL, on several at once if several do.
class QX_API qxURLManagerInterface : public qxThreadSafeReference
{
public:
    ~qxURLManagerInterface() noexcept(false) override;

    /// False: all holders share one manager.
    bool useDeepCopy() override;

    /// A new adapter for `url`, which begins with its scheme; null when it cannot be opened. An adapter with
    /// an error is reported and dropped.
    virtual qxRefPointer<qxSerializeAdapter> onGetURLAdapter(const qxString& url,
                                                             qxSerializeAction action) = 0;
};
