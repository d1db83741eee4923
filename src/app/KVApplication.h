#pragma once

#include <QApplication>

#include <memory>

class KVAppDelegate;
class KVSingleInstance;

// The Korvelle process: its identity, the one running instance per session,
// and the controller that does the rest.
class KVApplication : public QApplication
{
    Q_OBJECT

public:
    KVApplication(int &argc, char **argv);
    ~KVApplication() override;

    int run();

private:
    std::unique_ptr<KVAppDelegate> m_delegate;
    KVSingleInstance *m_instance;
};
