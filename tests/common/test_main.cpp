#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

#ifdef _WIN32
namespace {

// Under Wine the crash debugger ends a crashed program with exit code 0, so a
// run that crashed would count as passed. The runtime's signal hook comes
// first and ends it with a code of its own.
[[noreturn]] void Crashed(int signal) {
  std::fprintf(stderr, "\ntest program crashed (signal %d)\n", signal);
  std::fflush(stderr);
  std::_Exit(70);
}

}  // namespace
#endif

int main(int argc, char** argv) {
#ifdef _WIN32
  for (int signal : {SIGSEGV, SIGILL, SIGFPE}) std::signal(signal, Crashed);
#endif
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
