#include "KVMainQueue.h"

#include <QCoreApplication>
#include <QThread>

namespace KVMainQueue {

void post(std::function<void()> work)
{
    QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(work), Qt::QueuedConnection);
}

void post(const QPointer<QObject> &context, std::function<void()> work)
{
    post([context, work = std::move(work)] {
        if (context)
            work();
    });
}

bool isMainThread()
{
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

} // namespace KVMainQueue
