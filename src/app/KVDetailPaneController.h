#pragma once

#include "model/KVVolumeItem.h"

#include <QObject>
#include <QPointer>

class KVDetailPaneView;
class KVMainWindow;

// Fills the detail pane from the selection and turns what the user does
// there into requests: a command of the action menu, a rename, a reveal.
// The welcome tip shows only until the first volume is ever chosen.
class KVDetailPaneController : public QObject
{
    Q_OBJECT

public:
    KVDetailPaneController(KVMainWindow *window, QObject *parent = nullptr);

    void updateDetailView(const KVVolumeItemPtr &selection);

Q_SIGNALS:
    void commandChosen(const QString &identifier);
    // The selected volume is to take this name (it differs from its own).
    void renameRequested(const QString &newName);
    void revealRequested();

private:
    void renameEnded(const QString &newName);

    QPointer<KVMainWindow> m_window;
    QPointer<KVDetailPaneView> m_view;
    KVVolumeItemPtr m_selection;
};
