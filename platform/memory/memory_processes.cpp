#include "base/text.h"
#include "platform/memory/memory_platform.h"

namespace varnel::mem {

class MemoryJob final : public IJob {
 public:
  MemoryJob(MemoryProcesses& owner, std::wstring command, MemoryProcesses::Script script)
      : owner_(owner), command_(std::move(command)), script_(std::move(script)) {}

  std::optional<std::vector<std::uint32_t>> ProcessIds(std::size_t capacity) override {
    owner_.events.push_back(L"query " + command_);
    if (script_.failingQueries < 0 || queries_ < script_.failingQueries) {
      ++queries_;
      return std::nullopt;
    }
    const std::size_t step = static_cast<std::size_t>(queries_ - std::max(script_.failingQueries, 0));
    ++queries_;
    const std::vector<std::wstring> none;
    const auto& images = script_.polls.empty()
                             ? none
                             : script_.polls[std::min(step, script_.polls.size() - 1)];
    for (std::uint32_t id : running_) owner_.images_.erase(id);
    running_.clear();
    for (const auto& image : images) {
      const std::uint32_t id = owner_.nextId_++;
      owner_.images_[id] = image;
      running_.push_back(id);
    }
    if (running_.empty() && !ended_) {
      ended_ = true;
      owner_.events.push_back(L"end " + command_);
      if (script_.onFinish) script_.onFinish();
    }
    if (running_.size() > capacity) return std::nullopt;
    return running_;
  }

  std::optional<std::uint32_t> ExitCode() override {
    return ended_ ? script_.exitCode : std::nullopt;
  }

 private:
  MemoryProcesses& owner_;
  std::wstring command_;
  MemoryProcesses::Script script_;
  std::vector<std::uint32_t> running_;
  int queries_ = 0;
  bool ended_ = false;
};

void MemoryProcesses::AddScript(std::wstring_view commandLine, Script script) {
  scripts[text::Upper(commandLine)] = std::move(script);
}

std::unique_ptr<IJob> MemoryProcesses::StartInJob(std::wstring_view commandLine, int show) {
  const std::wstring command(commandLine);
  const auto it = scripts.find(text::Upper(commandLine));
  Script script = it == scripts.end() ? Script{} : it->second;
  if (script.failsToStart || command.empty()) {
    events.push_back(L"fail " + command);
    return nullptr;
  }
  events.push_back(L"start " + command);
  shows.push_back(show);
  if (script.onStart) script.onStart();
  return std::make_unique<MemoryJob>(*this, command, std::move(script));
}

std::wstring MemoryProcesses::ImageName(std::uint32_t processId) {
  const auto it = images_.find(processId);
  return it == images_.end() ? std::wstring() : it->second;
}

bool MemoryRestorePoints::BeginRestorePoint(std::wstring_view description) {
  if (!available) return false;
  begun.emplace_back(description);
  return true;
}

}  // namespace varnel::mem
