#include "KVDiskListWizard.h"

#include "app/KVAlert.h"

KVDiskListWizard::KVDiskListWizard(DiskList list, QWidget *parent)
    : KVSlidingWizard(parent)
    , m_list(list)
{
}

void KVDiskListWizard::setUpDiskTable(QTableView *view, QList<KVDiskTable::Column> columns,
                                      KVDiskTable::CellText cellText, QWidget *spinner)
{
    m_table = new KVDiskTable(view, std::move(columns), std::move(cellText));
    connect(m_table, &KVDiskTable::selectionDidChange, this, &KVDiskListWizard::updateButtons);
    m_spinner = spinner;
    m_spinner->hide();
}

void KVDiskListWizard::updateTable()
{
    m_spinner->show();
    if (!m_disks) {
        tableDidLoad(KVAppError(KVAppErrorCode::DiskNotFound, tr("The disks cannot be listed"),
                                tr("Korvelle cannot reach its disk tools.")));
        return;
    }
    (m_disks->*m_list.update)(inCurrentRun([this](const KVOptionalError &error) { tableDidLoad(error); }));
}

void KVDiskListWizard::tableDidLoad(const KVOptionalError &error)
{
    if (error) {
        KVAlert::showError(parentWidget(), *error);
        reset();
        endSheet(KVSheetReturnCode::Cancelled);
        return;
    }
    m_spinner->hide();
    reloadTable();
}

void KVDiskListWizard::reloadTable()
{
    m_table->reloadData(m_disks ? (m_disks->*m_list.items)() : QList<KVVolumeItemPtr>());
}

void KVDiskListWizard::resetDiskList()
{
    startNewRun();
    if (m_disks)
        (m_disks->*m_list.clear)();
    reloadTable();
    m_table->deselectAll();
    m_spinner->hide();
}
