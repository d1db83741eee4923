#pragma once

#include "KVTranslations.h"

#include <QApplication>

#include <memory>

class KVAppDelegate;
class KVSingleInstance;

// The Korvelle process: its identity, its language, the one running instance
// per session, and the controller that does the rest.
class KVApplication : public QApplication
{
    Q_OBJECT

public:
    KVApplication(int &argc, char **argv);
    ~KVApplication() override;

    int run();

private:
    KVTranslations m_translations;
    std::unique_ptr<KVAppDelegate> m_delegate;
    KVSingleInstance *m_instance;
};
