#include "KVHelpBrowser.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QTextBrowser>
#include <QVBoxLayout>

KVHelpBrowser::KVHelpBrowser(QWidget *parent)
    : QDialog(parent)
    , m_browser(new QTextBrowser)
{
    setObjectName(QStringLiteral("helpBrowser"));
    setWindowTitle(tr("Korvelle Help"));
    m_browser->setObjectName(QStringLiteral("helpText"));
    m_browser->setSearchPaths({QStringLiteral(":/help")});
    // Links between the pages stay here; anything else goes to the browser.
    m_browser->setOpenExternalLinks(true);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    auto *back = buttons->addButton(tr("Back"), QDialogButtonBox::ActionRole);
    back->setEnabled(false);
    connect(back, &QPushButton::clicked, m_browser, &QTextBrowser::backward);
    connect(m_browser, &QTextBrowser::backwardAvailable, back, &QPushButton::setEnabled);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_browser);
    layout->addWidget(buttons);
    resize(620, 560);
}

void KVHelpBrowser::showPage(Page page)
{
    static const char *const pages[] = {"index.html", "encryption.html", "troubleshooting.html"};
    m_browser->setSource(QUrl(QString::fromLatin1(pages[static_cast<int>(page)])));
    show();
    raise();
    activateWindow();
}
