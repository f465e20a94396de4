#ifdef _WIN32

#include <algorithm>

#include "tests/platform/win32_case.h"

namespace varnel::testing_support {
namespace {

class Win32Processes : public Contract {
 protected:
  std::wstring Cmd() { return p().system.SystemDirectory() + L"\\cmd.exe"; }

  std::vector<std::wstring> Images(IJob& job) {
    std::vector<std::wstring> names;
    if (auto ids = job.ProcessIds(101))
      for (auto id : *ids) names.push_back(text::Lower(p().processes.ImageName(id)));
    std::sort(names.begin(), names.end());
    return names;
  }
};

// cmd runs ping as its child: the job holds both, by name, until both end
// (ping lives four seconds, so a loaded machine still sees both). A
// list too small for both gives nothing, and a process gone has no name.
TEST_P(Win32Processes, JobHoldsTheProgramAndWhatItStarts) {
  auto job = p().processes.StartInJob(
      L"\"" + Cmd() + L"\" /c ping -n 5 127.0.0.1 >nul & exit 7", 0);
  ASSERT_TRUE(job);
  const std::vector<std::wstring> both = {L"cmd.exe", L"ping.exe"};
  ASSERT_TRUE(Eventually([&] { return Images(*job) == both; }));
  EXPECT_FALSE(job->ExitCode());
  EXPECT_FALSE(job->ProcessIds(1));
  // The job keeps the handle of the process it started, so only the child's
  // name can go with it.
  auto ids = job->ProcessIds(101);
  ASSERT_TRUE(ids);
  auto child = std::find_if(ids->begin(), ids->end(), [&](std::uint32_t id) {
    return text::SameText(p().processes.ImageName(id), L"ping.exe");
  });
  ASSERT_NE(child, ids->end());
  EXPECT_TRUE(Eventually([&] {
    auto left = job->ProcessIds(101);
    return left && left->empty();
  }));
  EXPECT_TRUE(Eventually([&] { return job->ExitCode() == 7u; }));
  EXPECT_TRUE(Eventually([&] { return p().processes.ImageName(*child).empty(); }));
  EXPECT_TRUE(p().processes.ImageName(0xFFFFFFF0u).empty());
}

TEST_P(Win32Processes, ACommandThatCannotStartGivesNoJob) {
  EXPECT_FALSE(p().processes.StartInJob(Scratch(L"missing.exe"), 0));
  EXPECT_FALSE(p().processes.StartInJob(L"", 0));
  ASSERT_TRUE(p().files.WriteWholeFile(Scratch(L"plain.exe"), Bytes("MZ not really")));
  EXPECT_FALSE(p().processes.StartInJob(L"\"" + Scratch(L"plain.exe") + L"\"", 0));
}

INSTANTIATE_TEST_SUITE_P(Real, Win32Processes, ::testing::ValuesIn(Win32Only()), BackendName);

}  // namespace
}  // namespace varnel::testing_support

#endif
