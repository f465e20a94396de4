#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>

#include "inventory/gui_dispatcher.h"

namespace varnel {
namespace {

using namespace std::chrono_literals;

TEST(GuiDispatcherTest, OnTheGuiThreadInvokeRunsAtOnce) {
  GuiDispatcher dispatcher;
  int ran = 0;
  EXPECT_TRUE(dispatcher.Invoke([&] { ++ran; }));
  EXPECT_EQ(ran, 1);
  EXPECT_EQ(dispatcher.Drain(), 0);
}

TEST(GuiDispatcherTest, WorkerHandOversRunOnTheGuiThreadAndWakeIt) {
  GuiDispatcher dispatcher;
  const auto gui = std::this_thread::get_id();
  std::atomic<int> wakeUps{0};
  dispatcher.SetWakeUp([&] { ++wakeUps; });

  std::thread::id ranOn;
  int value = 0;
  auto worker = std::async(std::launch::async, [&] {
    const bool first = dispatcher.Invoke([&] { ranOn = std::this_thread::get_id(); value = 1; });
    // The worker sees what the GUI thread did before Invoke returned.
    const bool second = dispatcher.Invoke([&] { value *= 10; });
    return first && second && value == 10;
  });
  int served = 0;
  while (served < 2) served += dispatcher.WaitAndDrain(1000ms);
  EXPECT_TRUE(worker.get());
  EXPECT_EQ(ranOn, gui);
  EXPECT_EQ(wakeUps, 2);
  EXPECT_EQ(dispatcher.WaitAndDrain(1ms), 0);
}

TEST(GuiDispatcherTest, CloseReleasesWaitingWorkersUnserved) {
  GuiDispatcher dispatcher;
  std::atomic<bool> queued{false};
  dispatcher.SetWakeUp([&] { queued = true; });
  bool ran = false;
  auto worker =
      std::async(std::launch::async, [&] { return dispatcher.Invoke([&] { ran = true; }); });
  while (!queued) std::this_thread::sleep_for(1ms);
  dispatcher.Close();
  EXPECT_FALSE(worker.get());
  EXPECT_FALSE(ran);
  EXPECT_EQ(dispatcher.Drain(), 0);

  // Later hand-overs are refused from any thread, the GUI thread included.
  EXPECT_FALSE(dispatcher.Invoke([&] { ran = true; }));
  EXPECT_FALSE(std::async(std::launch::async, [&] {
                 return dispatcher.Invoke([&] { ran = true; });
               }).get());
  EXPECT_FALSE(ran);
  // A closed dispatcher does not make the GUI thread wait.
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(dispatcher.WaitAndDrain(5000ms), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, 1000ms);
}

TEST(GuiDispatcherTest, AFailingHandOverFailsItsInvokerNotTheGuiThread) {
  GuiDispatcher dispatcher;
  auto worker = std::async(std::launch::async, [&] {
    try {
      dispatcher.Invoke([] { throw std::runtime_error("row"); });
    } catch (const std::runtime_error&) {
      return true;
    }
    return false;
  });
  int served = 0;
  while (served < 1) served += dispatcher.WaitAndDrain(1000ms);
  EXPECT_TRUE(worker.get());
}

}  // namespace
}  // namespace varnel
