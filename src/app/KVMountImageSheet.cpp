#include "KVMountImageSheet.h"

#include "ui_MountImageSheet.h"

#include "model/KVDisplayText.h"

#include <QDir>
#include <QFileInfo>

KVMountImageSheet::KVMountImageSheet(QWidget *parent)
    : KVMountSheet(parent)
    , m_ui(std::make_unique<Ui::MountImageSheet>())
{
    m_ui->setupUi(this);
    setParts(m_ui->mountImagePassword, m_ui->mountImageErrorNotification, m_ui->mountImageMountButton,
             m_ui->mountImageCancelButton);
}

KVMountImageSheet::~KVMountImageSheet() = default;

void KVMountImageSheet::setImagePath(const QString &path)
{
    m_imagePath = path;
    const QFileInfo image(path);
    m_ui->heading->setText(tr("Enter Password for %1").arg(KVDisplayText::inSentence(image.completeBaseName())));
    const QString location = KVDisplayText::singleLine(QDir::toNativeSeparators(image.absoluteFilePath()));
    m_ui->imagePathLabel->setText(m_ui->imagePathLabel->fontMetrics().elidedText(
        location, Qt::ElideMiddle, m_ui->mountImagePassword->minimumWidth()));
    m_ui->imagePathLabel->setToolTip(location);
}

bool KVMountImageSheet::readOnly() const
{
    return m_ui->mountImageReadOnly->isChecked();
}

QUrl KVMountImageSheet::mountRoot() const
{
    return mountRootFromText(m_ui->mountImageMountPoint->text());
}

QUrl KVMountImageSheet::mountRootFromText(const QString &text)
{
    if (text.trimmed().isEmpty())
        return QUrl();
    QString path = text;
    if (path == u"~" || path.startsWith(u"~/"))
        path = QDir::homePath() + path.mid(1);
    if (QDir::isRelativePath(path))
        path = QDir::home().filePath(path);
    path = QDir::cleanPath(path);
    return QUrl::fromLocalFile(path.endsWith(u'/') ? path : path + u'/');
}

void KVMountImageSheet::reset()
{
    enableButtons();
    cleanPasswords();
    m_ui->mountImageReadOnly->setChecked(false);
    m_ui->mountImageMountPoint->clear();
    hideErrorNotification();
    focusPassword();
}
