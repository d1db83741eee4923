#pragma once

#include "KVSheetReturnCode.h"
#include "model/KVAppError.h"

#include <QObject>
#include <QPointer>
#include <QUrl>

class KVDiskImage;
class KVMountSheet;
class QMessageBox;

// The mount flow that both password sheets share, the one for an image chosen
// or dropped and the one for a favourite: attach with the sheet's password;
// a wrong password or an invalid mount path is said in the sheet, which stays
// open; any other failure is logged and shown in an alert, and the sheet ends.
//
// The two sheets differ in one thing only: the return code with which the
// sheet ends after such an alert.
class KVImageMountSheetController : public QObject
{
    Q_OBJECT

public:
    // What to attach; it travels with the request, not in the controller.
    struct Request
    {
        QString imagePath;
        bool readOnly = false;
        QUrl mountRoot; // empty: where the tool mounts by default
        bool openAfterMount = false;
    };

    KVImageMountSheetController(KVMountSheet *sheet, KVSheetReturnCode afterAlert, QObject *parent = nullptr);

    void setDi(KVDiskImage *di);
    KVDiskImage *di() const;
    KVMountSheet *sheet() const { return m_sheet; }

    void mount(const Request &request);
    // Logs the error and shows it in an alert over the sheet's window.
    QMessageBox *showError(const KVAppError &error) const;

Q_SIGNALS:
    // The sheet has ended after a mount, with or without an alert.
    void mountEnded();

private:
    void mountDidEnd(const KVOptionalError &error);

    QPointer<KVDiskImage> m_di;
    KVMountSheet *m_sheet;
    KVSheetReturnCode m_afterAlert;
};
