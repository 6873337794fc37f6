// SPDX-License-Identifier: see LICENSE

#include "serialize/qxurlschemes.h"

namespace
{

struct Scheme {
    const char* name;
    qxURLOpener opener;
};

constexpr unsigned int MAX_SCHEMES = 16;

// Made by the compiler: other sources add to it before the initialisers of this one may have run.
constinit Scheme s_schemes[MAX_SCHEMES] = {}; // those without a name are free
constinit unsigned int s_count = 0;

} // namespace

bool qxAddURLScheme(const char* scheme, qxURLOpener opener)
{
    if (s_count == MAX_SCHEMES || qxIsOwnURLScheme(scheme)) return false;
    s_schemes[s_count++] = {scheme, opener};
    return true;
}

bool qxIsOwnURLScheme(std::string_view scheme)
{
    for (const char* const name : {"file", "mem", "con", "cache"})
        if (scheme == name) return true;
    return qxFindURLOpener(scheme) != nullptr;
}

qxURLOpener qxFindURLOpener(std::string_view scheme)
{
    for (unsigned int i = 0; i < s_count; ++i)
        if (scheme == s_schemes[i].name) return s_schemes[i].opener;
    return nullptr;
}

bool qxIsURLForCallersOnly(const qxString& url)
{
    const qxString scheme = qxSerializeAdapter::getURLScheme(url);
    for (const char* const name : {"mem", "con", "tcp", "udp"})
        if (scheme == name) return true;
    return false;
}
