// SPDX-License-Identifier: see LICENSE

#include "settings/qxkeysource.h"

#include "qxserializeadapter.h"

#include "platform/qxplatformenvironment.h"
#include "platform/qxplatformfile.h"
#include "platform/qxplatformfolder.h"
#include "serialize/qxurl.h"
#include "serialize/qxurlschemes.h"

namespace
{

constexpr const char* DEFAULT_URL = "/usr/local/quaxosdk/quaxosdk.reg";
constexpr const char* NAME_IN_FOLDER = "/quaxosdk/quaxosdk.reg";

bool isThere(const qxKeySource& source)
{
    qxPlatformFileIdentity identity;
    int error;
    return !source.file.empty() &&
           (!qxPlatformFileIdentify(source.file.c_str(), identity, error) || identity.exists);
}

} // namespace

qxKeySource qxDefaultKeySource()
{
    return qxMakeKeySource(DEFAULT_URL);
}

qxKeySource qxMakeKeySource(const qxString& url)
{
    const qxString scheme = qxSerializeAdapter::getURLScheme(url);
    std::string path;
    std::string full;
    int error;
    const bool isFile = (scheme.isEmpty() || scheme == "file") &&
                        qxURLToPath({url.getString(), url.length()}, path) && !path.empty();
    if (!isFile) return {url, {}};
    return {url, qxPlatformFileFullName(path.c_str(), full, error) ? full : path};
}

qxKeySource qxUserKeySource()
{
    std::string folder;
    if (!qxPlatformFolderOfSettings(folder) || folder.size() > qxString::MAX_LENGTH / 2) return {};
    return qxMakeKeySource((folder + NAME_IN_FOLDER).c_str());
}

qxKeySource qxPreferredKeySource()
{
    std::string named;
    if (qxPlatformGetEnvironment("QUAXO_SETTINGS", named) && !named.empty() &&
        named.size() <= qxString::MAX_LENGTH && !qxIsURLForCallersOnly(named.c_str()))
        return qxMakeKeySource(named.c_str());
    const qxKeySource user = qxUserKeySource();
    const qxKeySource system = qxDefaultKeySource();
    return user.file.empty() || (!isThere(user) && isThere(system)) ? system : user;
}
