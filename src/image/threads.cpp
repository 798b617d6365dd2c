#include "image/threads.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <vector>

namespace lv {

namespace {

std::atomic<int32_t> gCount{0};

// One band handed to a pool thread.
struct Task {
    const std::function<void(int32_t)>* row = nullptr;
    int32_t first = 0, last = 0;  // [first, last)
    std::atomic<int32_t>* done = nullptr;
    const std::atomic<bool>* stop = nullptr;
};

// The pool: threads that wait for a band, run it, and report it finished.
class Pool {
public:
    static Pool& Instance()
    {
        static Pool pool;
        return pool;
    }

    // Starts the tasks, one a thread, growing the pool when needed.
    bool Start(std::vector<Task>& tasks)
    {
        std::unique_lock<std::mutex> hold(lock_);
        while (threads_.size() < tasks.size()) {
            try {
                threads_.emplace_back([this, index = threads_.size()] { Run(index); });
                slots_.push_back({});
            } catch (...) {
                return false;  // no thread to be had: the caller runs alone
            }
        }
        for (size_t i = 0; i < tasks.size(); ++i) {
            slots_[i].task = tasks[i];
            slots_[i].ready = true;
        }
        pending_ = static_cast<int32_t>(tasks.size());
        wake_.notify_all();
        return true;
    }

    void Wait()
    {
        std::unique_lock<std::mutex> hold(lock_);
        finished_.wait(hold, [this] { return pending_ == 0; });
    }

    ~Pool()
    {
        {
            std::lock_guard<std::mutex> hold(lock_);
            quit_ = true;
        }
        wake_.notify_all();
        for (std::thread& t : threads_) t.join();
    }

private:
    struct Slot {
        Task task;
        bool ready = false;
    };

    void Run(size_t index)
    {
        for (;;) {
            Task task;
            {
                std::unique_lock<std::mutex> hold(lock_);
                wake_.wait(hold, [&] { return quit_ || (index < slots_.size() && slots_[index].ready); });
                if (quit_) return;
                task = slots_[index].task;
                slots_[index].ready = false;
            }
            for (int32_t r = task.first; r < task.last; ++r) {
                if (task.stop->load(std::memory_order_relaxed)) break;
                (*task.row)(r);
                task.done->fetch_add(1, std::memory_order_release);
            }
            std::lock_guard<std::mutex> hold(lock_);
            if (--pending_ == 0) finished_.notify_all();
        }
    }

    std::mutex lock_;
    std::condition_variable wake_, finished_;
    std::vector<std::thread> threads_;
    std::vector<Slot> slots_;
    int32_t pending_ = 0;
    bool quit_ = false;
};

}  // namespace

int32_t ThreadCount()
{
    const int32_t set = gCount.load();
    if (set > 0) return set;
    if (const char* text = std::getenv("LUMIVUE_THREADS")) {
        const int value = std::atoi(text);
        if (value >= 1) return value > 16 ? 16 : value;
    }
    const unsigned cores = std::thread::hardware_concurrency();
    return cores == 0 ? 1 : (cores > 16 ? 16 : static_cast<int32_t>(cores));
}

void SetThreadCount(int32_t count) { gCount.store(count > 0 ? count : 0); }

int32_t ParallelRows(int32_t count, const std::function<void(int32_t row)>& row,
                     const std::function<int32_t(int32_t done)>& step)
{
    const int32_t threads = count >= 2 ? std::min(ThreadCount(), count) : 1;
    std::atomic<bool> stop{false};
    std::atomic<int32_t> othersDone{0};
    const int32_t band = (count + threads - 1) / threads;
    std::vector<Task> tasks;
    for (int32_t t = 1; t < threads; ++t) {
        const int32_t first = t * band, last = std::min(count, first + band);
        if (first < last) tasks.push_back({&row, first, last, &othersDone, &stop});
    }
    const bool shared = !tasks.empty() && Pool::Instance().Start(tasks);
    const int32_t own = shared ? std::min(count, band) : count;

    int32_t result = 0;
    for (int32_t r = 0; r < own && !result; ++r) {
        row(r);
        result = step(r + othersDone.load(std::memory_order_acquire));
    }
    if (shared) {
        // The calling thread keeps the box alive while the others finish.
        const int32_t total = count;
        for (;;) {
            const int32_t done = own + othersDone.load(std::memory_order_acquire);
            if (result) stop.store(true);
            if (done >= total || result) break;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            result = step(done - 1);
        }
        Pool::Instance().Wait();
        if (!result) result = step(count - 1);
    }
    return result;
}

}  // namespace lv
