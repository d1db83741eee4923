// Measures a rebuild of the sidebar with many mounted volumes, as happens after
// every change an engine reports (and after every free-space refresh):
//   1. the model reset alone;
//   2. what the window does on a rebuild: the reset and the expansion state;
//   3. the same followed by the view's layout of all rows and one paint of
//      the last screenful of volume rows (Qt lays out on the next pass of the
//      event loop; scrolling to the end forces it here).
// Run with QT_QPA_PLATFORM=offscreen for figures without a display.
#include "favourites/KVFavouriteItem.h"
#include "app/KVMainWindow.h"
#include "app/KVOutlineView.h"
#include "app/KVSidebarModel.h"
#include "model/KVVolumeItem.h"

#include "../common/KVBenchTiming.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPixmap>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {


QList<KVVolumeItemPtr> volumes(int count)
{
    QList<KVVolumeItemPtr> made;
    for (int i = 0; i < count; ++i) {
        const QString name = QStringLiteral("Volume %1").arg(i);
        made.append(KVVolumeItem::create(
            {{QStringLiteral("sysProfilerInfo"),
              QVariantMap{{QStringLiteral("_name"), name},
                          {QStringLiteral("mount_point"), QString(QStringLiteral("/media/bench/") + name)},
                          {QStringLiteral("size_in_bytes"), qint64(1000000000) + i},
                          {QStringLiteral("free_space_in_bytes"), qint64(250000000)},
                          {QStringLiteral("volume_uuid"), QStringLiteral("UUID-%1").arg(i)},
                          {QStringLiteral("writable"), QStringLiteral("yes")}}}},
            nullptr));
    }
    return made;
}

QList<KVFavouriteFolderPtr> favourites()
{
    QList<KVFavouriteFolderPtr> folders;
    for (const char *name : {"Home", "Work", "Archive"}) {
        const KVFavouriteFolderPtr folder = KVFavouriteFolder::create(QString::fromLatin1(name));
        for (int i = 0; i < 5; ++i)
            folder->content().append(KVFavouriteItem::create(QStringLiteral("Image %1").arg(i), folder));
        folders.append(folder);
    }
    return folders;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const QList<KVFavouriteFolderPtr> folders = favourites();
    KVMainWindow window;
    window.show();

    std::printf("volumes  model reset  window rebuild  rebuild + layout + paint   (median ms)\n");
    for (const int count : {10, 100, 1000}) {
        const QList<KVVolumeItemPtr> mounted = volumes(count);
        const KVVolumeItemPtr selection = mounted.at(count / 2);
        KVSidebarModel model;
        const double reset = kvTime(51, [&] { model.reload(folders, mounted, selection); }).medianMs;
        const double rebuild = kvTime(51, [&] { window.reloadSidebar(folders, mounted, selection); }).medianMs;
        QPixmap canvas(window.sidebar()->viewport()->size());
        const double painted = kvTime(51, [&] {
            window.reloadSidebar(folders, mounted, selection);
            window.sidebar()->scrollToBottom(); // lays every row out, shows volume rows
            window.sidebar()->viewport()->render(&canvas);
        }).medianMs;
        std::printf("%7d  %11.3f  %14.3f  %24.3f\n", count, reset, rebuild, painted);
    }
    return 0;
}
