#pragma once

#include <QObject>
#include <QPointer>

#include <functional>

// The GUI thread's queue. Work posted here runs on the GUI thread, in the order
// it was posted, once control returns to the event loop, even when posted from
// the GUI thread itself.
namespace KVMainQueue {

void post(std::function<void()> work);

// As post(work), but the call is dropped when `context` is gone by the time it
// would run. From a worker thread, hand over the QPointer the work was made
// with: a raw pointer must not be read there while the GUI thread may delete it.
void post(const QPointer<QObject> &context, std::function<void()> work);
inline void post(QObject *context, std::function<void()> work)
{
    post(QPointer<QObject>(context), std::move(work));
}
template<typename T>
void post(const QPointer<T> &context, std::function<void()> work)
{
    post(QPointer<QObject>(context), std::move(work));
}

bool isMainThread();

} // namespace KVMainQueue
