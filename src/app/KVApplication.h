#pragma once

#include <QApplication>
#include <memory>

class KVMainWindow;

// The Korvelle process: application identity, artwork and the main window.
class KVApplication : public QApplication
{
    Q_OBJECT

public:
    KVApplication(int &argc, char **argv);
    ~KVApplication() override;

    int run();

private:
    std::unique_ptr<KVMainWindow> m_mainWindow;
};
