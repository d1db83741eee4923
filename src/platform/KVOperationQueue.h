#pragma once

#include <functional>
#include <memory>

// A serial queue of work on a worker thread of its own: operations run one at
// a time, in the order they were added, never on the GUI thread.
//
// Destroying the queue drops the operations that have not started. One that is
// running (a tool may take long, or hang) is left to finish on its own and is
// not waited for, so operations must not touch their owner from the worker
// thread: they take what they need by value and reach their owner through the
// main queue, holding it weakly.
class KVOperationQueue
{
public:
    KVOperationQueue();
    ~KVOperationQueue();
    KVOperationQueue(const KVOperationQueue &) = delete;
    KVOperationQueue &operator=(const KVOperationQueue &) = delete;

    void addOperation(std::function<void()> operation);

private:
    struct State;
    static void work(const std::shared_ptr<State> &state);

    std::shared_ptr<State> m_state;
};
