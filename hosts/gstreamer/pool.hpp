// The element's own threads: a fixed set of workers that run the parts of one
// frame; the calling thread takes part 0 and waits for the rest.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tqgst {

class Pool {
 public:
  explicit Pool(unsigned workers) {
    for (unsigned i = 0; i < workers; ++i) threads_.emplace_back([this] { loop(); });
  }
  ~Pool() {
    {
      std::lock_guard lock(mutex_);
      stop_ = true;
    }
    wake_.notify_all();
    for (std::thread &t : threads_) t.join();
  }
  Pool(const Pool &) = delete;
  Pool &operator=(const Pool &) = delete;

  // Calls work(0) ... work(parts - 1) and returns when every call has.
  void run(unsigned parts, const std::function<void(unsigned)> &work) {
    std::unique_lock lock(mutex_);
    work_ = &work;
    next_ = 1;
    parts_ = parts;
    pending_ = parts - 1;
    wake_.notify_all();
    lock.unlock();
    work(0);
    lock.lock();
    while (next_ < parts_) take(lock);
    done_.wait(lock, [this] { return pending_ == 0; });
    work_ = nullptr;
  }

 private:
  void take(std::unique_lock<std::mutex> &lock) {
    const unsigned part = next_++;
    const std::function<void(unsigned)> *work = work_;
    lock.unlock();
    (*work)(part);
    lock.lock();
    if (--pending_ == 0) done_.notify_all();
  }
  void loop() {
    std::unique_lock lock(mutex_);
    for (;;) {
      wake_.wait(lock, [this] { return stop_ || (work_ && next_ < parts_); });
      if (stop_) return;
      take(lock);
    }
  }

  std::vector<std::thread> threads_;
  std::mutex mutex_;
  std::condition_variable wake_, done_;
  const std::function<void(unsigned)> *work_ = nullptr;
  unsigned next_ = 0, parts_ = 0, pending_ = 0;
  bool stop_ = false;
};

}  // namespace tqgst
