// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformfile.h"
#include "platform/qxplatformfolder.h"
#include "platform/windows/qxplatformfile_windows.h"
#include "platform/windows/qxwindows.h"

#include <memory>
#include <string>
#include <vector>

namespace
{

constexpr DWORD CHANGES = FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_SIZE |
                          FILE_NOTIFY_CHANGE_LAST_WRITE | FILE_NOTIFY_CHANGE_ATTRIBUTES |
                          FILE_NOTIFY_CHANGE_CREATION;

// One folder that is asked for its changes again and again.
class Folder
{
public:
    explicit Folder(const std::wstring& name)
        : m_folder(CreateFileW(name.c_str(), FILE_LIST_DIRECTORY,
                               FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                               FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OVERLAPPED, nullptr)),
          m_event(CreateEventW(nullptr, TRUE, FALSE, nullptr))
    {
        ask();
    }
    ~Folder()
    {
        if (m_isAsked) {
            CancelIoEx(m_folder, &m_request); // whichever thread has asked
            DWORD size;
            GetOverlappedResult(m_folder, &m_request, &size,
                                TRUE); // the system writes into the room until then
        }
        if (m_folder != INVALID_HANDLE_VALUE) CloseHandle(m_folder);
        if (m_event) CloseHandle(m_event);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    HANDLE getEvent() const { return m_event; }
    bool isBroken() const { return !m_isAsked; }

    /// Takes the answer, which says no more than that there is one, and asks again.
    void goOn()
    {
        DWORD size = 0;
        if (!m_isAsked || WaitForSingleObject(m_event, 0) != WAIT_OBJECT_0) return;
        m_isAsked = false;
        if (GetOverlappedResult(m_folder, &m_request, &size, FALSE)) ask();
    }

private:
    void ask()
    {
        if (m_folder == INVALID_HANDLE_VALUE || !m_event) return;
        ResetEvent(m_event);
        m_request = {};
        m_request.hEvent = m_event;
        m_isAsked = ReadDirectoryChangesW(m_folder, m_room, sizeof(m_room), FALSE, CHANGES, nullptr,
                                          &m_request, nullptr) != 0;
    }

    HANDLE m_folder;
    HANDLE m_event;
    OVERLAPPED m_request = {};
    bool m_isAsked = false;
    alignas(8) unsigned char m_room[4096]; // what does not fit is lost, but not that there was something
};

std::wstring folderOf(const std::wstring& file)
{
    const std::size_t end = file.find_last_of(L"/\\:");
    return end == std::wstring::npos ? L"." : file.substr(0, end + 1);
}

} // namespace

struct qxPlatformFolderWatch {
    std::vector<std::unique_ptr<Folder>> folders;
    HANDLE waker = nullptr;

    qxPlatformFolderWatch() : waker(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}
    ~qxPlatformFolderWatch() { CloseHandle(waker); }
    qxPlatformFolderWatch(const qxPlatformFolderWatch&) = delete;
    qxPlatformFolderWatch& operator=(const qxPlatformFolderWatch&) = delete;
};

qxPlatformFolderWatch* qxPlatformFolderWatchOpen(const char* name, int& error)
{
    auto watch = std::make_unique<qxPlatformFolderWatch>();
    const std::wstring file = qxWideFileName(name);
    watch->folders.push_back(std::make_unique<Folder>(folderOf(file)));
    std::string resolved;
    if (qxPlatformFileResolve(name, resolved, error) && folderOf(qxWideText(resolved)) != folderOf(file))
        watch->folders.push_back(std::make_unique<Folder>(folderOf(qxWideText(resolved))));
    error = 0;
    return watch.release();
}

void qxPlatformFolderWatchClose(qxPlatformFolderWatch* watch)
{
    delete watch;
}

void qxPlatformFolderWatchWait(qxPlatformFolderWatch* watch, unsigned int milliseconds)
{
    std::vector<HANDLE> events = {watch->waker};
    for (const std::unique_ptr<Folder>& folder : watch->folders)
        if (!folder->isBroken()) events.push_back(folder->getEvent());
    WaitForMultipleObjects(static_cast<DWORD>(events.size()), events.data(), FALSE, milliseconds);
    for (const std::unique_ptr<Folder>& folder : watch->folders) folder->goOn();
}

void qxPlatformFolderWatchWake(qxPlatformFolderWatch* watch)
{
    SetEvent(watch->waker);
}

bool qxPlatformFolderWatchIsBroken(const qxPlatformFolderWatch* watch)
{
    for (const std::unique_ptr<Folder>& folder : watch->folders)
        if (folder->isBroken()) return true;
    return false;
}
