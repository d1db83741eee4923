#include "KVOperationQueue.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

struct KVOperationQueue::State
{
    std::mutex mutex;
    std::condition_variable wakeUp;
    std::deque<std::function<void()>> pending;
    bool stopped = false;
};

void KVOperationQueue::work(const std::shared_ptr<State> &state)
{
    for (;;) {
        std::function<void()> operation;
        {
            std::unique_lock lock(state->mutex);
            state->wakeUp.wait(lock, [&] { return state->stopped || !state->pending.empty(); });
            if (state->stopped)
                return;
            operation = std::move(state->pending.front());
            state->pending.pop_front();
        }
        operation();
    }
}

KVOperationQueue::KVOperationQueue()
    : m_state(std::make_shared<State>())
{
    std::thread(work, m_state).detach();
}

KVOperationQueue::~KVOperationQueue()
{
    std::deque<std::function<void()>> dropped;
    {
        std::lock_guard lock(m_state->mutex);
        m_state->stopped = true;
        dropped.swap(m_state->pending);
    }
    m_state->wakeUp.notify_all();
}

void KVOperationQueue::addOperation(std::function<void()> operation)
{
    {
        std::lock_guard lock(m_state->mutex);
        m_state->pending.push_back(std::move(operation));
    }
    m_state->wakeUp.notify_one();
}
