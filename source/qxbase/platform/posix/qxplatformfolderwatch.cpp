// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformfile.h"
#include "platform/qxplatformfolder.h"

#include <cerrno>
#include <memory>
#include <string>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

struct qxPlatformFolderWatch {
    int changes = -1; // of inotify
    int waker = -1;
    bool isBroken = false;

    qxPlatformFolderWatch() = default;
    qxPlatformFolderWatch(const qxPlatformFolderWatch&) = delete;
    qxPlatformFolderWatch& operator=(const qxPlatformFolderWatch&) = delete;
    ~qxPlatformFolderWatch()
    {
        if (changes >= 0) close(changes);
        if (waker >= 0) close(waker);
    }
};

namespace
{

// Names come and go, files are written and get other rights; and the folder itself may go.
constexpr unsigned int EVENTS = IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                IN_ATTRIB | IN_MODIFY | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
constexpr unsigned int LOSSES = IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT;

void add(qxPlatformFolderWatch& watch, const std::string& file)
{
    const std::size_t end = file.rfind('/');
    const std::string folder = end == std::string::npos ? "." : file.substr(0, end + 1);
    if (inotify_add_watch(watch.changes, folder.c_str(), EVENTS) < 0) watch.isBroken = true;
}

} // namespace

qxPlatformFolderWatch* qxPlatformFolderWatchOpen(const char* name, int& error)
{
    auto watch = std::make_unique<qxPlatformFolderWatch>();
    watch->changes = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    if (watch->changes >= 0) watch->waker = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    error = watch->waker >= 0 ? 0 : errno;
    if (error != 0) return nullptr;

    add(*watch, name);
    std::string resolved;
    int ignored;
    if (qxPlatformFileResolve(name, resolved, ignored) && resolved != name) add(*watch, resolved);
    return watch.release();
}

void qxPlatformFolderWatchClose(qxPlatformFolderWatch* watch)
{
    delete watch;
}

void qxPlatformFolderWatchWait(qxPlatformFolderWatch* watch, unsigned int milliseconds)
{
    pollfd sources[] = {{watch->changes, POLLIN, 0}, {watch->waker, POLLIN, 0}};
    poll(sources, 2, static_cast<int>(milliseconds)); // a signal ends the wait early, which does no harm
    unsigned long long count;
    [[maybe_unused]] const ssize_t woken = read(watch->waker, &count, sizeof(count));

    alignas(inotify_event) char events[4096];
    for (;;) {
        const ssize_t size = read(watch->changes, events, sizeof(events));
        if (size <= 0) return;
        for (const char* place = events; place < events + size;) {
            const auto* const event = reinterpret_cast<const inotify_event*>(place);
            if (event->mask & LOSSES) watch->isBroken = true;
            place += sizeof(inotify_event) + event->len;
        }
    }
}

void qxPlatformFolderWatchWake(qxPlatformFolderWatch* watch)
{
    const unsigned long long one = 1;
    [[maybe_unused]] const ssize_t written = write(watch->waker, &one, sizeof(one));
}

bool qxPlatformFolderWatchIsBroken(const qxPlatformFolderWatch* watch)
{
    return watch->isBroken;
}
