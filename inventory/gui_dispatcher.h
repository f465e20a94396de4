#pragma once

#include <chrono>
#include <functional>

namespace varnel {

// Hands work from a worker thread to the GUI thread and waits for it there.
// The GUI thread serves hand-overs by calling Drain, from its message loop
// and from every wait of its own, so a worker can never wait on a GUI thread
// that waits on the worker.
class GuiDispatcher {
 public:
  GuiDispatcher();
  ~GuiDispatcher();
  GuiDispatcher(const GuiDispatcher&) = delete;
  GuiDispatcher& operator=(const GuiDispatcher&) = delete;

  // Worker: runs `work` on the GUI thread and returns when it has run; false,
  // without running it, once the dispatcher is closed. Called on the GUI
  // thread itself, runs `work` at once.
  bool Invoke(const std::function<void()>& work);
  // GUI thread: runs every waiting hand-over; returns how many ran.
  int Drain();
  // GUI thread: waits up to `timeout` for a hand-over, then drains.
  int WaitAndDrain(std::chrono::milliseconds timeout);
  // Called on the worker after it queued a hand-over; a window posts itself a
  // message here so that its loop drains.
  void SetWakeUp(std::function<void()> wakeUp);
  // Refuses every later hand-over and releases waiting workers unserved.
  void Close();

 private:
  struct State;
  State* state_;
};

}  // namespace varnel
