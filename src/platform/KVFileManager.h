#pragma once

#include <QString>

#include <functional>

// Shows a file or folder in the desktop's file manager. Behind an interface so
// that the shell can be tested without a desktop answering.
class KVFileManager
{
public:
    virtual ~KVFileManager() = default;
    // Returns at once; what the desktop does follows later.
    virtual void showItem(const QString &path) = 0;
};

// The freedesktop way: org.freedesktop.FileManager1.ShowItems on the session
// bus, which opens the folder that holds the item with the item selected.
// Where no file manager answers on the bus (no session bus, none running that
// offers the interface), `openFolder` is given the item itself when it is a
// folder, otherwise the folder that holds it.
class KVFreedesktopFileManager : public KVFileManager
{
public:
    using OpenFolder = std::function<void(const QString &folder)>;

    explicit KVFreedesktopFileManager(OpenFolder openFolder);

    void showItem(const QString &path) override;

private:
    OpenFolder m_openFolder;
};
