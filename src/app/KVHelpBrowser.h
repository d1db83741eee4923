#pragma once

#include <QDialog>

class QTextBrowser;

// The application's own help, read from the pages it carries: there is no
// web site to send anyone to, and help must work without a network.
class KVHelpBrowser : public QDialog
{
    Q_OBJECT

public:
    enum class Page { Help, Encryption, Troubleshooting };

    explicit KVHelpBrowser(QWidget *parent = nullptr);

    void showPage(Page page);
    QTextBrowser *browser() const { return m_browser; }

private:
    QTextBrowser *m_browser;
};
