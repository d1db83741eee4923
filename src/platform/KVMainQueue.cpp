#include "KVMainQueue.h"

#include <QCoreApplication>
#include <QThread>

namespace KVMainQueue {

void post(std::function<void()> work)
{
    QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(work), Qt::QueuedConnection);
}

bool isMainThread()
{
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

} // namespace KVMainQueue
