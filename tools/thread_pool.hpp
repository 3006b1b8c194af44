// A small pool owned by the tool (the library creates no threads): runs one
// indexed job over many items on its workers and the calling thread.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tqcs {

class ThreadPool {
 public:
  // `threads` counts the calling thread: 1 runs everything on the caller.
  explicit ThreadPool(int threads) {
    for (int i = 1; i < threads; ++i) workers_.emplace_back([this] { Work(); });
  }
  ~ThreadPool() {
    {
      std::lock_guard lock(mutex_);
      stop_ = true;
    }
    wake_.notify_all();
    for (std::thread &worker : workers_) worker.join();
  }
  ThreadPool(const ThreadPool &) = delete;
  ThreadPool &operator=(const ThreadPool &) = delete;

  int Size() const { return static_cast<int>(workers_.size()) + 1; }

  // Calls job(i) once for every i below count; returns when all calls are done.
  void ParallelFor(size_t count, const std::function<void(size_t)> &job) {
    {
      std::unique_lock lock(mutex_);
      done_.wait(lock, [this] { return active_ == 0; });
      job_ = &job;
      count_ = count;
      next_ = 0;
      pending_ = count;
      ++generation_;
    }
    wake_.notify_all();
    Drain();
    std::unique_lock lock(mutex_);
    // Workers still leaving Drain must not see the next job's counters.
    done_.wait(lock, [this] { return pending_ == 0 && active_ == 0; });
    job_ = nullptr;
  }

 private:
  void Drain() {
    for (size_t i; (i = next_.fetch_add(1)) < count_;) {
      (*job_)(i);
      std::lock_guard lock(mutex_);
      if (--pending_ == 0) done_.notify_all();
    }
  }
  void Work() {
    size_t seen = 0;
    for (;;) {
      {
        std::unique_lock lock(mutex_);
        wake_.wait(lock, [&] { return stop_ || generation_ != seen; });
        if (stop_) return;
        seen = generation_;
        ++active_;
      }
      Drain();
      std::lock_guard lock(mutex_);
      if (--active_ == 0) done_.notify_all();
    }
  }

  std::vector<std::thread> workers_;
  std::mutex mutex_;
  std::condition_variable wake_, done_;
  const std::function<void(size_t)> *job_ = nullptr;
  std::atomic<size_t> next_{0};
  size_t count_ = 0, pending_ = 0, generation_ = 0;
  int active_ = 0;
  bool stop_ = false;
};

}  // namespace tqcs
