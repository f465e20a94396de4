#include <chrono>
#include <system_error>
#include <thread>

#include "uninstall/uninstall_sequence.h"

namespace varnel {

namespace {

// `finished` is set however `work` ends, so the wait for it always ends.
// Without a thread the work runs here: the step still happens.
std::thread StartWorker(unsigned delayMs, std::function<void()> work, std::atomic<bool>& finished) {
  auto body = [delayMs, work = std::move(work), &finished] {
    std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
    try {
      work();
    } catch (...) {
    }
    finished = true;
  };
  try {
    return std::thread(body);
  } catch (const std::system_error&) {
    body();
    return {};
  }
}

}  // namespace

void UninstallSequence::RunOnWorker(StepLine line, std::function<void()> work, unsigned sleepMs,
                                     int counterWrap, int dotsDivisor) {
  std::atomic<bool> finished{false};
  std::thread worker = StartWorker(options_.workerDelayMs, std::move(work), finished);
  WaitWithDots(line, finished, sleepMs, counterWrap, dotsDivisor);
  if (worker.joinable()) worker.join();
}

void UninstallSequence::WaitWithDots(StepLine line, const std::atomic<bool>& finished,
                                      unsigned sleepMs, int counterWrap, int dotsDivisor) {
  const std::wstring caption = view_.Caption(line);
  int counter = 0;
  while (!finished) {
    platform_.system.SleepMs(sleepMs);
    view_.ProcessMessages();
    view_.SetCaption(line, caption + std::wstring(counter / dotsDivisor + 1, L'.'));
    counter = (counter + 1) % counterWrap;
    // A sleep that does not really sleep (a test's) must not starve the worker.
    std::this_thread::yield();
  }
}

void UninstallSequence::RestorePointStep() {
  IRestorePoints& points = platform_.restorePoints;
  // The point is opened and never closed, so that the uninstall that follows
  // belongs to it.
  RunOnWorker(StepLine::RestorePoint,
              [&points] { points.BeginRestorePoint(L"Varnel Uninstaller restore point"); }, 100, 25,
              5);
  view_.SetCaption(StepLine::RestorePoint, texts_.CreateRPFinish);
}

void UninstallSequence::RegBackupStep() {
  // The step keeps its place and captions in the sequence; no backup is made.
  RunOnWorker(StepLine::RegBackup, [] {}, 10, 250, 50);
  view_.SetCaption(StepLine::RegBackup, texts_.CreateRBFinish);
}

}  // namespace varnel
