#include "KVDetailPaneController.h"

#include "KVDetailPaneView.h"
#include "KVMainWindow.h"
#include "platform/KVUserDefaults.h"
#include "settings/KVPreferenceKeys.h"

#include <QTimer>

KVDetailPaneController::KVDetailPaneController(KVMainWindow *window, QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_view(window->detailPane())
{
    connect(m_view, &KVDetailPaneView::commandChosen, this, [this](const QString &identifier) {
        if (m_selection) // the menu may still be on screen as the selection goes
            Q_EMIT commandChosen(identifier);
    });
    connect(m_view, &KVDetailPaneView::revealRequested, this, &KVDetailPaneController::revealRequested);
    connect(m_view, &KVDetailPaneView::renameFinished, this, &KVDetailPaneController::renameEnded);
    connect(m_view, &KVDetailPaneView::renameCancelled, this, [this] { renameEnded(QString()); });
}

void KVDetailPaneController::updateDetailView(const KVVolumeItemPtr &selection)
{
    m_selection = selection;
    if (!m_view || !m_window)
        return;
    KVUserDefaults &defaults = KVUserDefaults::standard();
    if (!selection) {
        m_view->showNoSelection(defaults.boolForKey(KVShowWelcomeHelpKey));
        m_window->setAddToFavouritesEnabled(false);
        return;
    }
    if (defaults.boolForKey(KVShowWelcomeHelpKey))
        defaults.setBool(false, KVShowWelcomeHelpKey);
    m_view->showVolume(*selection);
    m_window->setAddToFavouritesEnabled(selection->type() == KVVolumeKind::DiskImage);
}

void KVDetailPaneController::renameEnded(const QString &newName)
{
    // An empty name (also what Escape leaves) renames nothing; the field
    // shows the volume's name again.
    if (m_selection && !newName.trimmed().isEmpty() && newName != m_selection->name())
        Q_EMIT renameRequested(newName);
    if (m_window)
        m_window->focusSidebar();
    // On the next turn, after a rename has had its chance to be reported.
    QTimer::singleShot(0, this, [this] { updateDetailView(m_selection); });
}
