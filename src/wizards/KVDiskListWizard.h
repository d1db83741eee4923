#pragma once

#include "disk/KVDisk.h"
#include "wizards/KVDiskTable.h"
#include "wizards/KVSlidingWizard.h"

#include <QPointer>

class QTableView;

// A sliding wizard whose first step is a list of disks asked of the disk
// engine: the encrypt-disk wizard (partitions that may be encrypted) and the
// mount-disk sheet (encrypted volumes that are not mounted).
//
// The shell hands it the engine (setDisks), calls updateTable() and shows it.
// A spinner turns until the list is in; a failure to list is an alert that
// ends the sheet.
class KVDiskListWizard : public KVSlidingWizard
{
    Q_OBJECT

public:
    // Which of the engine's lists the wizard shows.
    struct DiskList
    {
        void (KVDisk::*update)(KVDisk::ErrorBlock block);
        const QList<KVVolumeItemPtr> &(KVDisk::*items)() const;
        void (KVDisk::*clear)();
    };

    KVDisk *disks() const { return m_disks; }
    void setDisks(KVDisk *disks) { m_disks = disks; }
    KVDiskTable *diskTable() const { return m_table; }

public Q_SLOTS:
    // Asks the engine for the list; the spinner turns until it is in.
    void updateTable();

protected:
    KVDiskListWizard(DiskList list, QWidget *parent = nullptr);

    // Called once, after the interface is loaded.
    void setUpDiskTable(QTableView *view, QList<KVDiskTable::Column> columns, KVDiskTable::CellText cellText,
                        QWidget *spinner);
    // Starts a new run with an empty list and no selection: the part of
    // reset() that every such wizard shares.
    void resetDiskList();

private:
    void tableDidLoad(const KVOptionalError &error);
    void reloadTable();

    DiskList m_list;
    KVDiskTable *m_table = nullptr; // a child of the table view
    QPointer<QWidget> m_spinner;
    QPointer<KVDisk> m_disks;
};
