#pragma once

#include <functional>

// The GUI thread's queue. Work posted here runs on the GUI thread, in the order
// it was posted, once control returns to the event loop, even when posted from
// the GUI thread itself.
namespace KVMainQueue {

void post(std::function<void()> work);
bool isMainThread();

} // namespace KVMainQueue
