#include "KVFavouriteMountViewsController.h"
#include "settings/KVPreferences.h"

#include "KVImageMountSheetController.h"
#include "favourites/KVFavouriteItem.h"
#include "model/KVDisplayText.h"
#include "KVMountSheet.h"
#include "platform/KVSystemLog.h"

#include <QMessageBox>

#include "ui_FavouriteMountViews.h"

KVFavouriteMountViewsController::KVFavouriteMountViewsController(KVDiskImage *di, QWidget *window, QObject *parent)
    : QObject(parent)
    , m_window(new KVMountSheet(window))
    , m_ui(std::make_unique<Ui::FavouriteMountViews>())
    , m_mountFlow(new KVImageMountSheetController(m_window, KVSheetReturnCode::Cancelled, this))
{
    m_mountFlow->setDi(di);
    connect(m_mountFlow, &KVImageMountSheetController::mountEnded, this, &KVFavouriteMountViewsController::reset);
    m_ui->setupUi(m_window);
    m_window->setParts(m_ui->passwordField, m_ui->mountFavouriteErrorNotification, m_ui->mountFavouriteMountButton,
                       m_ui->mountFavouriteCancelButton);
    connect(m_window, &KVMountSheet::buttonClicked, this, &KVFavouriteMountViewsController::mountFavouriteButtons);
}

KVFavouriteMountViewsController::~KVFavouriteMountViewsController() = default;

KVDiskImage *KVFavouriteMountViewsController::di() const
{
    return m_mountFlow->di();
}

void KVFavouriteMountViewsController::setDi(KVDiskImage *di)
{
    m_mountFlow->setDi(di);
}

void KVFavouriteMountViewsController::setFavouriteItemToMount(const KVFavouriteItemPtr &item)
{
    const KVResult<QString> location = item->locationURL();
    if (!location) {
        m_unresolvedAlert = m_mountFlow->showError(location.error());
        reset();
        return;
    }
    m_favouriteItemToMount = item;
    m_ui->heading->setText(tr("Enter Password for %1").arg(KVDisplayText::inSentence(item->name())));
}

void KVFavouriteMountViewsController::openSheet()
{
    if (!m_favouriteItemToMount)
        return;
    // An answered alert goes only later; until then it is merely hidden.
    if (!m_unresolvedAlert || !m_unresolvedAlert->isVisible()) {
        m_window->open();
        return;
    }
    connect(m_unresolvedAlert, &QDialog::finished, this, &KVFavouriteMountViewsController::openSheet,
            Qt::SingleShotConnection);
}

void KVFavouriteMountViewsController::mountFavouriteButtons(const QString &identifier)
{
    if (identifier == u"mount") {
        mount();
    } else if (identifier == u"cancel" || identifier == u"exit") {
        m_window->endSheet(KVSheetReturnCode::Cancelled);
        reset();
    }
}

QUrl KVFavouriteMountViewsController::mountRoot(const QString &mountPoint)
{
    QString path = mountPoint;
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    const qsizetype slash = path.lastIndexOf(u'/');
    if (slash < 0)
        return QUrl();
    return QUrl::fromLocalFile(path.left(slash + 1));
}

void KVFavouriteMountViewsController::mount()
{
    disableButtons();
    if (!m_favouriteItemToMount || !m_mountFlow->di()) {
        m_window->endSheet(KVSheetReturnCode::Cancelled);
        reset();
        return;
    }
    const KVResult<QString> location = m_favouriteItemToMount->locationURL();
    if (!location) {
        m_mountFlow->showError(location.error());
        m_window->endSheet(KVSheetReturnCode::Cancelled);
        reset();
        return;
    }
    QUrl root;
    if (m_favouriteItemToMount->mountPoint().isEmpty())
        KVSystemLog::write(QStringLiteral("No mount point information in favorite item"));
    else
        root = mountRoot(m_favouriteItemToMount->mountPoint());

    m_mountFlow->mount({location.value(), m_favouriteItemToMount->readOnly(), root,
                        KVPreferences::prefOpenFinderAfterMount()});
}

void KVFavouriteMountViewsController::reset()
{
    cleanPasswords();
    enableButtons();
    m_window->hideErrorNotification();
    m_window->focusPassword();
}

void KVFavouriteMountViewsController::cleanPasswords()
{
    m_window->cleanPasswords();
}

void KVFavouriteMountViewsController::disableButtons()
{
    m_window->disableButtons();
}

void KVFavouriteMountViewsController::enableButtons()
{
    m_window->enableButtons();
}
