#include "inventory/gui_dispatcher.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

namespace varnel {

namespace {

// Lives on the invoking worker's stack; the worker does not return before
// `done`, so the queue may point at it.
struct HandOver {
  const std::function<void()>* work = nullptr;
  bool done = false;
  bool ran = false;
  std::exception_ptr failure;
};

}  // namespace

struct GuiDispatcher::State {
  std::mutex mutex;
  std::condition_variable served;   // workers wait here
  std::condition_variable arrived;  // the GUI thread waits here
  std::deque<HandOver*> queue;
  std::function<void()> wakeUp;
  bool closed = false;
  std::thread::id guiThread = std::this_thread::get_id();
};

GuiDispatcher::GuiDispatcher() : state_(new State) {}

// Every worker must have left Invoke by now: a released one still takes the lock.
GuiDispatcher::~GuiDispatcher() {
  Close();
  delete state_;
}

bool GuiDispatcher::Invoke(const std::function<void()>& work) {
  State& s = *state_;
  if (std::this_thread::get_id() == s.guiThread) {
    {
      std::lock_guard lock(s.mutex);
      if (s.closed) return false;
    }
    if (work) work();
    return true;
  }

  HandOver item;
  item.work = &work;
  std::function<void()> wakeUp;
  {
    std::lock_guard lock(s.mutex);
    if (s.closed) return false;
    s.queue.push_back(&item);
    wakeUp = s.wakeUp;
  }
  s.arrived.notify_all();
  if (wakeUp) wakeUp();

  std::unique_lock lock(s.mutex);
  s.served.wait(lock, [&] { return item.done; });
  // The work's own failure belongs to the caller, as with a direct call.
  if (item.failure) std::rethrow_exception(item.failure);
  return item.ran;
}

int GuiDispatcher::Drain() {
  State& s = *state_;
  std::deque<HandOver*> batch;
  {
    std::lock_guard lock(s.mutex);
    batch.swap(s.queue);
  }
  // Only what waited on entry: a busy worker cannot keep the GUI thread here.
  int count = 0;
  for (HandOver* item : batch) {
    std::exception_ptr failure;
    try {
      if (*item->work) (*item->work)();
    } catch (...) {
      failure = std::current_exception();
    }
    {
      std::lock_guard lock(s.mutex);
      item->ran = true;
      item->failure = failure;
      item->done = true;
    }
    s.served.notify_all();
    ++count;
  }
  return count;
}

int GuiDispatcher::WaitAndDrain(std::chrono::milliseconds timeout) {
  State& s = *state_;
  {
    std::unique_lock lock(s.mutex);
    s.arrived.wait_for(lock, timeout, [&] { return !s.queue.empty() || s.closed; });
  }
  return Drain();
}

void GuiDispatcher::SetWakeUp(std::function<void()> wakeUp) {
  std::lock_guard lock(state_->mutex);
  state_->wakeUp = std::move(wakeUp);
}

void GuiDispatcher::Close() {
  State& s = *state_;
  {
    std::lock_guard lock(s.mutex);
    s.closed = true;
    for (HandOver* item : s.queue) item->done = true;
    s.queue.clear();
  }
  s.served.notify_all();
  s.arrived.notify_all();
}

}  // namespace varnel
